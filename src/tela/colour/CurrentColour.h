#pragma once
// The current colour of the path API, as a packed device value: bits 0-7 red,
// 8-15 green, 16-23 blue. Main thread only.

int tela_getcolour();
// Storing the value already current changes nothing, so cached derived
// channels survive a redundant select.
void tela_setcolour(int packed);
