// Diagnostics.h: tela_splat, the report of programming errors, and its companions.
// A report prints and returns: the caller always carries on.
#pragma once

void tela_splat(const char* message);
void tela_set_debug(int level);      // stored; nothing in the library reads it
int tela_debug_level();
const char* telaDllVersionStr();
