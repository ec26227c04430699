#pragma once
// The application's text resources: strings filed under a number, so that
// code can name a text by its number and have it looked up, in whatever
// language the application filled the table with, only when it is shown.
//
// - The table starts empty; the application fills it (any thread: it locks).
// - Formats: 0 gives the text as filed; RESOURCE_FIRST_LINE gives it up to
//   its first newline. Other values are taken as 0.
// - A number with no text gives an empty string, without a message: a missing
//   translation must not flood the log each time a tool tip is shown.

#include "tela/core/LightweightString.h"
#include "tela/core/UIString.h"

constexpr ResStrFmt RESOURCE_FIRST_LINE = 1;

// Files `text` under `id`, replacing what was there.
void setResourceString(ResId id, const WString& text);
// Empties the table.
void clearResourceStrings();

WString resourceStrW(ResId id, ResStrFmt format = 0);

// The text `string` stands for: its characters when it has any, else its
// resource looked up (".." behind it when flags bit 0 asks for it), else
// nothing. The result is kept in `string`, so a second call looks nothing up
// and appends no second "..".
void resolveUIString(UIString& string);
