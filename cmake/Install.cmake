# `make install PREFIX=...`: the headers under include/tela/, libtela with its
# soname, a CMake package (find_package(Tela) gives Tela::tela) and tela.pc.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(DIRECTORY ${CMAKE_SOURCE_DIR}/src/tela DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h" PATTERN "*_private.h" EXCLUDE)
install(TARGETS tela EXPORT TelaTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT TelaTargets NAMESPACE Tela:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tela)

configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/TelaConfig.cmake.in
  ${CMAKE_BINARY_DIR}/TelaConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tela)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/TelaConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_BINARY_DIR}/TelaConfig.cmake ${CMAKE_BINARY_DIR}/TelaConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tela)

# The prefix is found from where tela.pc lies, so the package may be moved.
file(RELATIVE_PATH TELA_PC_UP /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" TELA_PC_UP "${TELA_PC_UP}")
configure_file(${CMAKE_SOURCE_DIR}/cmake/tela.pc.in ${CMAKE_BINARY_DIR}/tela.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/tela.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
