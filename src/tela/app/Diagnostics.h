// Diagnostics.h: tela_splat, the report of programming errors, and its companions.
// A report prints and returns: the caller always carries on.
#pragma once

// The message is the printf format of the report, so "%%" prints one percent
// sign. The library passes only fixed messages of its own. Text that comes
// from data must not be given here: report it with murl_printf("%s", text).
// A message whose conversions would want arguments is printed as it stands.
void tela_splat(const char* message) __attribute__((format(printf, 1, 0)));
void tela_set_debug(int level);      // stored; nothing in the library reads it
int tela_debug_level();
const char* telaDllVersionStr();
