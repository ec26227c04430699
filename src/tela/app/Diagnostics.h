// Diagnostics.h: the debug level and the library's version, for the debug
// commands. tela_splat, the report of programming errors, is in core/Log.h.
#pragma once

#include "tela/core/Log.h"

void tela_set_debug(int level);      // stored; nothing in the library reads it
int tela_debug_level();
const char* telaDllVersionStr();
