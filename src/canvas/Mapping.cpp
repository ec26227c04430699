#include "canvas/Mapping.h"

#include "canvas/Canvas.h"

// The damage marks that mapping and unmapping cause (the subtree over the
// canvas's shape, and the area exposed beneath it) come with the display
// pipeline; until then only the flags change.

void tela_mapcanvas(Canvas* canvas)
{
    if (!canvas || canvas->mapped)
        return;
    canvas->mapped = 1;
}

void tela_unmapcanvas(Canvas* canvas)
{
    if (tela_exiting() || !canvas || !canvas->mapped || !canvas->parent)
        return;
    canvas->mapped = 0;
    canvas->dirty = 0;
}
