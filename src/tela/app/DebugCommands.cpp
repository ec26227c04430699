// Commands for looking into a running application, registered when the
// library loads so that they appear in the application's command map.

#include "tela/state/TelaState.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/Commands.h"
#include "tela/core/Log.h"
#include "tela/input/MouseState.h"
#include "tela/render/RasterImage.h"

namespace {

void toggle_draw_debugging()
{
    canvupdTrace = canvupdTrace == 0 ? 2 : 0;
}

void toggle_window_style()
{
    Canvas* root = tela_rootcanvas();
    if (root && root->window)
        root->window->setUseWindowsTitleBar(!root->window->hasTitleBar());
}

// No text of their own (999999), shown in no menu by default.
const UIString NO_TEXT{999999, 0, 0};

const CommandRegistrar s_reset_mouse("TELA reset mouse handling", Cmd::Function(tela_resetMouse), NO_TEXT, NO_TEXT, 2);
const CommandRegistrar s_draw_debugging("Toggle draw debugging", Cmd::Function(toggle_draw_debugging), NO_TEXT,
                                        NO_TEXT, 2);
const CommandRegistrar s_window_style("Toggle Window Style", Cmd::Function(toggle_window_style), NO_TEXT, NO_TEXT, 2);
const CommandRegistrar s_cache_stats("Dump RasterImage Cache Stats", Cmd::Function(RasterImage::dumpCacheStats),
                                     NO_TEXT, NO_TEXT, 2);

} // namespace
