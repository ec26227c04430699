#include "tela/canvas/CanvasClient.h"

int CanvasClient::contextCursor(const XY<int>&)
{
    return 16;
}

void CanvasClient::drawUnbuffered(Qv::Ptr<iRegion> area)
{
    area = nullptr;
}
