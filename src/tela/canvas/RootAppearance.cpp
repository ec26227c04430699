#include "tela/canvas/RootAppearance.h"

#include "tela/canvas/DisplayRoad.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/colour/Palette.h"
#include "tela/core/HTMLUtils.h"
#include "tela/core/Preferences.h"
#include "tela/platform/iImagingService.h"
#include "tela/platform/OS.h"
#include "tela/state/TelaState.h"

namespace {

constexpr const char* WINDOW_COLOUR_KEY = "UI : Window colour";
constexpr int ROOT_TEXTURE_CHANNEL = 11;

// The image as the window composes it: in host memory for the host road,
// on the composited surface otherwise. Converted only when it is not already.
Qv::Ptr<iImage> at_location(const Qv::Ptr<iImage>& image, iImageBase::eLocation location)
{
    if (!image || image->location() == location)
        return image;
    iImagingService* imaging = OS()->imaging();
    if (location == iImageBase::eHostMemory) {
        Qv::Ptr<iHostImage> host;
        imaging->toHostImage(host, Qv::dynamicCast<iGPUImage>(image));
        return host;
    }
    Qv::Ptr<iGPUImage> gpu;
    imaging->toGPUImage(gpu, Qv::dynamicCast<iHostImage>(image));
    return gpu;
}

} // namespace

Colour tela_window_colour_preference()
{
    const String text = prefs().getPreference(WINDOW_COLOUR_KEY);
    unsigned int rgb = 0;
    if (text.empty() || !HTMLUtils::parseHex(text.view(), rgb))
        return Palette::defaultWindow();
    return fromHex(rgb);
}

Colour tela_rootColour(Canvas* canvas)
{
    const RootWindowRec* row = tela_root_row(canvas);
    return row ? row->rootColour : Colour(0.0, 0.0, 0.0, true);
}

void tela_setRootColour(Canvas* canvas, const Colour& colour)
{
    RootWindowRec* row = tela_root_row(canvas);
    if (!row)
        return;
    char hex[7];
    HTMLUtils::formatHex(toHex(colour), hex);
    prefs().setPreference(WINDOW_COLOUR_KEY, String(hex));
    row->rootColour = colour;
}

Qv::Ptr<iImage> tela_rootTexture(Canvas* canvas)
{
    const RootWindowRec* row = tela_root_row(canvas);
    return row ? row->wallpaperImage : nullptr;
}

void tela_refresh_wallpaper(RootCanvas* root)
{
    RootWindowRec* row = tela_root_row(root);
    if (!row || !row->wallpaperProvider || !root->window)
        return;
    const XY<int> size = root->getDimensions();
    XY<int> present{-1, -1};
    if (row->wallpaperImage)
        row->wallpaperImage->getSize(present);
    if (present == size)
        return;
    row->wallpaperImage = at_location(row->wallpaperProvider->getWallpaper(size), tela_image_location(tela_display_road(root)));
}

void tela_setRootTexture(Canvas* canvas, const Qv::Ptr<iWallpaperProvider>& provider, bool announce)
{
    if (!tela_state().rootTextureChangeEnabled)
        return;
    RootWindowRec* row = tela_root_row(canvas);
    if (!row)
        return;
    if (row->wallpaperProvider != provider) {
        row->wallpaperProvider = provider;
        row->wallpaperImage = nullptr;
    }
    tela_refresh_wallpaper(static_cast<RootCanvas*>(row->rootCanvas));
    if (!announce)
        return;
    canvupd_mark_all(row->rootCanvas);
    tela_state().issueNotification(NotifyMsg(String("tela_setRootTexture"), ROOT_TEXTURE_CHANNEL), ROOT_TEXTURE_CHANNEL);
}

bool tela_getRootTextureChangeEnabled()
{
    return tela_state().rootTextureChangeEnabled;
}

void tela_setRootTextureChangeEnabled(bool enabled)
{
    tela_state().rootTextureChangeEnabled = enabled;
}
