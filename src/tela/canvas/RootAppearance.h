#pragma once
// What a root shows where no canvas covers it: a wallpaper image when its
// provider gives one, else the window colour, which the user's preference
// "UI : Window colour" keeps between runs.

#include "tela/colour/Colour.h"
#include "tela/core/Ptr.h"
#include "tela/platform/iImage.h"
#include "tela/platform/iWallpaperProvider.h"

class Canvas;
class RootCanvas;

// The colour of the root of `canvas`; opaque black for a canvas with no root.
Colour tela_rootColour(Canvas* canvas);
// Stores the colour as the preference (as the device colour it paints, so a
// colour without the bypass flag is stored gamma-corrected), then in the row.
// Nothing is marked: the colour shows at the next repaint. A canvas with no
// root changes nothing.
void tela_setRootColour(Canvas* canvas, const Colour& colour);

// The wallpaper image at the window's present size; null when there is none.
Qv::Ptr<iImage> tela_rootTexture(Canvas* canvas);
// Replaces the provider and asks it for an image at once. Ignored unless
// changes are enabled. With `announce`, the whole root repaints and the
// library's notifier issues "tela_setRootTexture" on channel 11.
void tela_setRootTexture(Canvas* canvas, const Qv::Ptr<iWallpaperProvider>& provider, bool announce);
bool tela_getRootTextureChangeEnabled();
void tela_setRootTextureChangeEnabled(bool enabled);

// The window colour preference, as a device colour, or the default palette's
// window colour when it is missing or not a colour.
Colour tela_window_colour_preference();
// Asks the provider again when the root's size differs from the image's, and
// brings the image to where the window composes.
void tela_refresh_wallpaper(RootCanvas* root);
