# The library's layers, bottom to top. Folders of src/tela on one line form one
# layer: they call each other because the library's own rules make them (see
# design.md). A file may include from its own layer and the layers below it,
# never from a layer above, and never a platform's header: the check in
# cmake/CheckLayers.cmake, run by `make test`, fails on either.
set(TELA_LAYERS
  "core platform"                  # the framework services and the seam
  "colour"                         # colour values, gamma, the current colour
  "state"                          # the library's state and notifier
  # Text shares the layer of the renderer: text is drawn through the renderer,
  # and the renderer's text falls back to the default font, which the font table
  # gives; a canvas's fonts come from the same table through its window.
  "vector canvas events render text" # the canvas tree, what it is made of, fonts and text layout
  "input"                          # the root window's input, cursors, monitors, placement
  "app"                            # Tela::Application and the debug commands
)
# The platforms: each may include the library and the embedded default, which
# the window platforms draw through; the default includes no other platform.
set(TELA_PLATFORM_BASE headless)
