# cmake -DBUILD_DIR= -DSOURCE_DIR= -DWORK_DIR= -DCOMPARE= -DGENERATOR= -P CheckInstall.cmake
# Installs the built library into a fresh prefix, builds examples/hello out of
# tree against it (through the CMake package and again through pkg-config),
# runs it headless and compares its picture with the reference.
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    string(REPLACE ";" " " command "${ARGV}")
    message(FATAL_ERROR "failed (${result}): ${command}\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
foreach(expected include/tela/app/Application.h include/tela/canvas/Canvas.h lib/libtela.so
                 lib/cmake/Tela/TelaConfig.cmake lib/pkgconfig/tela.pc)
  if(NOT EXISTS ${prefix}/${expected})
    file(GLOB_RECURSE installed RELATIVE ${prefix} ${prefix}/lib/*)
    message(FATAL_ERROR "not installed: ${expected} (lib has: ${installed})")
  endif()
endforeach()
if(EXISTS ${prefix}/include/core OR EXISTS ${prefix}/include/headless OR EXISTS ${prefix}/include/sdl)
  message(FATAL_ERROR "headers installed outside include/tela")
endif()

# Through the CMake package.
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples/hello -B ${WORK_DIR}/hello -G ${GENERATOR}
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/hello)
set(ENV{TELA_BACKEND} headless)
set(ENV{XDG_CONFIG_HOME} ${WORK_DIR}/config)
file(MAKE_DIRECTORY ${WORK_DIR}/shots ${WORK_DIR}/shots-pc)
run(${WORK_DIR}/hello/hello ${WORK_DIR}/shots)
run(${COMPARE} ${WORK_DIR}/shots/hello.png ${SOURCE_DIR}/tests/data/hello.png)

# Through pkg-config, as a Makefile would.
set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs tela OUTPUT_VARIABLE flags RESULT_VARIABLE result
                OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know tela")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
run(c++ ${SOURCE_DIR}/examples/hello/hello.cpp -o ${WORK_DIR}/hello-pc ${flags} -Wl,-rpath,${prefix}/lib)
run(${WORK_DIR}/hello-pc ${WORK_DIR}/shots-pc)
run(${COMPARE} ${WORK_DIR}/shots-pc/hello.png ${SOURCE_DIR}/tests/data/hello.png)
message(STATUS "installed, built out of tree twice, and drew the reference picture")
