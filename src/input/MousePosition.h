#pragma once
// Where the mouse was last reported, in the library's coordinates.

#include "platform/Geometry.h"

XY<int> tela_getMousePos();
