// tela_deletecanvas: takes a canvas and its subtree out of every place that
// may still name it, in an order later steps rely on, then destroys it.

#include "tela/canvas/CanvasTree.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/Mapping.h"
#include "tela/canvas/MouseContainmentManager.h"
#include "tela/canvas/Picking.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/Log.h"
#include "tela/events/EventQueue.h"
#include "tela/events/EventTypes.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"
#include "tela/state/TelaState.h"
#include "tela/vector/GraphicsState.h"

namespace {


} // namespace

void tela_deletecanvas(Canvas* canvas)
{
    if (!canvas)
        return;
    TelaState& state = tela_state();

    if (canvas->canvasFlags & Canvas::APPLICATION_ROOT) {
        // The program's window goes with it, and with the window every way
        // the user had to end the program: the loop ends here, as if the
        // window had been closed, so run() returns and the program can shut
        // down.
        tela_splat("tela_deletecanvas: the application's root canvas was deleted; its window is gone and the loop ends\n");
        canvas->canvasFlags &= ~Canvas::APPLICATION_ROOT;
        OS()->windowing()->shutdownMessageLoop();
    }
    // A canvas in a loop of parents (made despite the report) is cut out of
    // it first: its subtree is a tree again, and the deletion below ends.
    if (canvas_is_in_loop(canvas))
        canvas_disconnect(canvas);

    Canvas* root = canvas->getRootParent();

    // Saved states drawing into the canvas draw into its window's root instead;
    // a root that goes leaves them the library's root, or nothing.
    if (gstate_stack_holds_canvas(canvas)) {
        Canvas* const library_root = tela_rootcanvas();
        gstate_stack_replace_canvas(canvas, root != canvas ? root
                                            : library_root != canvas ? library_root
                                                                     : nullptr);
    }

    if (event_get_kbd_focus() == canvas) {
        // A root that goes takes the focus with it: it cannot fall back on itself.
        Canvas* const library_root = tela_rootcanvas();
        event_set_kbd_focus(library_root != canvas ? library_root : nullptr);
    }

    if (state.captureCanvas == canvas) {
        state.captureCanvas = nullptr;
        event_flush(canvas, EventType::MOUSE_CLASS, false);
    }

    canvupd_mark_clean(canvas);
    tela_unmapcanvas(canvas);

    // A corrupt tree (a loop made despite the warning) would never run out of
    // children; the live count bounds the work.
    const int live_before = tela_live_canvas_count();
    int deletions = 0;
    for (Canvas* child = canvas->youngestChild; child;) {
        Canvas* next = child->olderSibling;
        if (++deletions > live_before)
            tela_splat("canvas_free: endless loop");
        else
            tela_deletecanvas(child);
        child = next;
    }

    if (tela_currentcanvas() == canvas)
        tela_setcanvas(nullptr);

    canvas_disconnect(canvas);
    event_flush(canvas, 0, false);

    canvas->shape(nullptr);
    canvas->updateRegion(nullptr);

    if (state.currentMouseCanvas == canvas) {
        if (!canvas->isRoot()) {
            const MouseEvent& last = state.lastMouseEvent;
            state.currentMouseCanvas = canvas_pick(root, last.pos);
        }
        // Whatever the pick found, the stored value is dropped: callers rely on it.
        state.currentMouseCanvas = nullptr;
    }

    // A canvas made later at this address must not count as the one pressed.
    if (state.lastClickCanvas == canvas)
        state.lastClickCanvas = nullptr;
    Tela::MouseContainmentManager::instance().remove(canvas);
    delete canvas; // the virtual destructor; the block goes back through the seam
}
