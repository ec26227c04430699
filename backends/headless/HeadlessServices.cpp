#include "headless/HeadlessServices.h"
#include "headless/SoftwareRenderer.h"
#include "tela/core/NeverDestroyed.h"

#include "headless/FreeTypeFont.h"
#include "headless/HeadlessRootWindow.h"
#include "headless/HostImage.h"
#include "headless/ImageDecoding.h"
#include "headless/PixmanRegion.h"
#include "headless/PngFile.h"
#include "headless/VideoChildWindow.h"
#include "tela/core/Log.h"
#include "tela/core/SettingsFile.h"
#include "tela/platform/Platforms.h"

#include <pixman.h>
#include <sys/stat.h>

Headless::Services& Headless::services()
{
    // Placement into static storage: constructed once, never destroyed.
    static Qv::NeverDestroyed<Services> instance;
    return *instance;
}

// The embedded default: always there, never in the way of a display.
const Tela::Platform& tela_platform_headless()
{
    static const Tela::Platform platform {
        "headless",
        [] { return static_cast<iOSServices*>(&Headless::services()); },
        [] { return false; },
        [] { return Tela::installOSServices(&Headless::services()) || OS() == &Headless::services(); },
    };
    return platform;
}

bool Headless::FileSystem::isDirectory(const WString& path)
{
    struct stat status {};
    return ::stat(toUTF8(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

WString Headless::FileSystem::applicationName()
{
    const WString given = Qv::givenApplicationName();
    return given.empty() ? WString(u"Tela") : given;
}

bool Headless::Windowing::createRootWindow(Qv::Ptr<iRootWindow>& out, std::int32_t mode)
{
    auto window = Qv::make<RootWindow>(mode, Headless::displayLocationFor(mode, m_default_location));
    m_last_window = window.get();
    out = window;
    return true;
}

bool Headless::Windowing::createChildWindow(Qv::Ptr<iVideoChildWindow>& out, const Qv::Ptr<iRootWindow>& parent,
                                            const XY<int>& size, const XY<int>& position)
{
    out = nullptr;
    const Qv::Ptr<RootWindow> root = Qv::dynamicCast<RootWindow>(parent);
    if (!root)
        return false;   // only this platform's windows can hold its children
    out = Qv::make<VideoChildWindow>(root.get(), size, position, m_child_windows_shapeable);
    return true;
}

bool Headless::Windowing::createRegion(Qv::Ptr<iRegion>& out, const TopDownRect* rects, std::size_t count)
{
    PixmanRegion::create(out, rects, count);
    return true;
}

void Headless::Windowing::enumerateFonts(std::set<WString, WString::ICompare>& names)
{
    enumerateFontFamilies(names);
}

int Headless::Windowing::runMessageLoop()
{
    return m_main_loop.run();
}

void Headless::SystemInfo::getMonitors(Qv::Vector<MonitorInfo>& monitors)
{
    monitors.clear();
    if (m_scripted) {
        monitors = m_monitors;
        return;
    }
    MonitorInfo primary;
    primary.screenBox = Qv::Box<int> { 0, 0, 1920, 1080 };
    primary.desktopBox = Qv::Box<int> { 0, 0, 1920, 1040 };
    primary.isPrimary = 1;
    primary.name = String("Headless");
    monitors.push_back(primary);
}

bool Headless::Imaging::toHostImage(Qv::Ptr<iHostImage>& out, const Qv::Ptr<iGPUImage>& image)
{
    out = Qv::dynamicCast<iHostImage>(image);   // every headless image lives in host memory
    return static_cast<bool>(out);
}

bool Headless::Imaging::toGPUImage(Qv::Ptr<iGPUImage>& out, const Qv::Ptr<iHostImage>& image)
{
    const Qv::Ptr<HostImage> host = Qv::dynamicCast<HostImage>(image);
    if (host && host->location() == iImageBase::eGPU)
        out = host;
    else
        out = host ? host->copy(iImageBase::eGPU) : nullptr;
    return static_cast<bool>(out);
}

bool Headless::Imaging::createTargetImage(Qv::Ptr<iImage>& out, const XY<int>& size, int location)
{
    out = HostImage::create(size, static_cast<iImageBase::eLocation>(location));
    return static_cast<bool>(out);
}

bool Headless::Shell::userPicturesFolder(WString& out, int)
{
    out = WString(u"/tmp");
    return true;
}

int Headless::Shell::messageBox(const WString& title, const WString& text, int, int)
{
    murl_printf("[%s] %s\n", toUTF8(title).c_str(), toUTF8(text).c_str());
    return 1;
}

Qv::Ptr<iShaderEffect> Headless::Imaging::findShader(const String& name)
{
    return SoftwareRenderer::findShader(name);
}

bool Headless::Windowing::createCursor(Qv::Ptr<iCursor>& out, const Qv::Ptr<iHostImage>& image, const XY<int>& hotSpot)
{
    if (!image)
        return false;
    auto cursor = Qv::make<Cursor>();
    image->getSize(cursor->size);
    cursor->hotSpot = hotSpot;
    out = cursor;
    return true;
}

bool Headless::Windowing::createStockCursor(Qv::Ptr<iCursor>& out, std::int32_t id)
{
    auto cursor = Qv::make<Cursor>();
    cursor->stockId = id;
    ++m_stock_cursors_made;
    out = cursor;
    return true;
}

bool Headless::Imaging::loadImage(Qv::Ptr<iHostImage>& out, const WString& path)
{
    Qv::Ptr<HostImage> image = loadImageFile(toUTF8(path).c_str());
    out = image;
    return static_cast<bool>(image);
}

bool Headless::Imaging::decodeImage(Qv::Ptr<iHostImage>& out, const std::uint8_t* bytes, std::size_t size,
                                    const WString& name)
{
    Qv::Ptr<HostImage> image = Headless::decodeImage(bytes, size, toUTF8(name).c_str());
    out = image;
    return static_cast<bool>(image);
}

bool Headless::Imaging::saveImage(const Qv::Ptr<iImage>& image, const WString& path)
{
    return image && savePng(*image, toUTF8(path).c_str());
}

bool Headless::Imaging::resizeImage(Qv::Ptr<iHostImage>& out, const Qv::Ptr<iHostImage>& image, const XY<int>& size)
{
    XY<int> from;
    if (!image || !image->data() || image->bitsPerPixel() != 32)
        return false;
    image->getSize(from);
    Qv::Ptr<HostImage> resized = HostImage::create(size);
    if (!resized || from.x <= 0 || from.y <= 0)
        return false;
    pixman_image_t* source = pixman_image_create_bits(PIXMAN_a8r8g8b8, from.x, from.y,
                                                      reinterpret_cast<std::uint32_t*>(image->data()), from.x * 4);
    pixman_image_t* target = pixman_image_create_bits(PIXMAN_a8r8g8b8, size.x, size.y,
                                                      reinterpret_cast<std::uint32_t*>(resized->data()), resized->stride());
    if (source && target) {
        // The transform maps target pixels back into the source.
        pixman_transform_t scale;
        pixman_transform_init_scale(&scale, pixman_double_to_fixed(double(from.x) / size.x),
                                    pixman_double_to_fixed(double(from.y) / size.y));
        pixman_image_set_transform(source, &scale);
        pixman_image_set_filter(source, PIXMAN_FILTER_GOOD, nullptr, 0);
        pixman_image_composite32(PIXMAN_OP_SRC, source, nullptr, target, 0, 0, 0, 0, 0, 0, size.x, size.y);
    }
    const bool made = source && target;
    if (source)
        pixman_image_unref(source);
    if (target)
        pixman_image_unref(target);
    if (made)
        out = resized;
    return made;
}
