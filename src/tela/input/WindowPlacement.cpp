#include "tela/input/WindowPlacement.h"

#include "tela/canvas/Canvas.h"
#include "tela/core/Json.h"
#include "tela/core/Preferences.h"
#include "tela/input/Monitors.h"
#include "tela/input/Monitors_private.h"
#include "tela/input/RootWindowEventHandler.h"
#include "tela/platform/iFileSystemService.h"
#include "tela/platform/OS.h"
#include "tela/state/TelaState.h"

#include <cmath>
#include <cstdlib>

namespace {

constexpr int NOT_STORED = -12345;
constexpr int MINIMUM_WIDTH = 1024;
constexpr int MINIMUM_HEIGHT = 768;
constexpr float RESCUE_FRACTION = 0.9f;

String key_for(const WString& applicationName, const char* suffix)
{
    String key = toUTF8(applicationName);
    key += std::string_view(suffix);
    return key;
}

// "(x,y)" of the older form; NOT_STORED twice when it is anything else.
XY<int> parse_pair(const String& text)
{
    Qv::Vector<std::string_view> parts;
    std::string_view rest = text.view();
    while (!rest.empty()) {
        const std::size_t comma = rest.find(',');
        const std::string_view part = rest.substr(0, comma);
        if (!part.empty())
            parts.push_back(part);
        rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    }
    if (parts.size() != 2 || parts[0].front() != '(')
        return XY<int>(NOT_STORED, NOT_STORED);
    const String first(parts[0].substr(1).data(), parts[0].size() - 1);
    const String second(parts[1].data(), parts[1].size());
    return XY<int>(std::atoi(first.c_str()), std::atoi(second.c_str()));
}

bool parse_bool(const String& text, bool fallback)
{
    const std::string_view value = text.view();
    if (value == "true" || value == "1" || value == "yes")
        return true;
    if (value == "false" || value == "0" || value == "no")
        return false;
    return fallback;
}

void set_flag(iRootWindow::InitArgs& args, std::uint32_t flag, bool on)
{
    args.flags = on ? (args.flags | flag) : (args.flags & ~flag);
}

iRootWindow::InitArgs restore_older_form(iRootWindow::InitArgs args, const WString& applicationName)
{
    const XY<int> position = parse_pair(prefs().getPreference(key_for(applicationName, " window XY").c_str()));
    const XY<int> size = parse_pair(prefs().getPreference(key_for(applicationName, " window WH").c_str()));
    set_flag(args, iRootWindow::InitArgs::eTitleBar,
             parse_bool(prefs().getPreference(key_for(applicationName, " window titlebar").c_str()), true));
    set_flag(args, iRootWindow::InitArgs::eMaximised,
             parse_bool(prefs().getPreference(key_for(applicationName, " window maximised").c_str()), true));
    if (position.x == NOT_STORED || position.y == NOT_STORED || size.x == NOT_STORED || size.y == NOT_STORED)
        return args;
    Qv::Vector<iSystemInfo::MonitorInfo> monitors;
    Tela::getMonitorList(monitors);
    const int scale = monitors.empty() ? 1 : static_cast<int>(monitors.front().scale);
    args.position = XY<int>(position.x * scale, position.y * scale);
    args.size = XY<int>(size.x * scale, size.y * scale);
    return args;
}

} // namespace

iRootWindow::InitArgs RootWindowEventHandler::restoreWindowState(const WString& applicationName)
{
    iRootWindow::InitArgs args;
    args.name = applicationName;
    const String text = prefs().getPreference(key_for(applicationName, " : Window").c_str());
    if (text.empty())
        return restore_older_form(args, applicationName);
    const JSON::ParseResult parsed = JSON::parse(text.view());
    if (!parsed.ok())
        return args;
    const JSON::Element stored = parsed.root();

    // A missing member reads as -1, which the unsigned comparison leaves alone.
    args.size = XY<int>(stored["width"].getInt(-1), stored["height"].getInt(-1));
    if (static_cast<unsigned>(args.size.x) < MINIMUM_WIDTH)
        args.size.x = MINIMUM_WIDTH;
    if (static_cast<unsigned>(args.size.y) < MINIMUM_HEIGHT)
        args.size.y = MINIMUM_HEIGHT;
    args.position = XY<int>(stored["x"].getInt(-1), stored["y"].getInt(-1));
    set_flag(args, iRootWindow::InitArgs::eTitleBar, stored["title"].getBool(false));
    set_flag(args, iRootWindow::InitArgs::eMaximised, stored["maximised"].getBool(false));

    // The monitor the window was on, or the primary one when that has gone.
    const XY<int> centre(args.position.x + args.size.x / 2, args.position.y + args.size.y / 2);
    iSystemInfo::MonitorInfo monitor = Tela::getMonitorAtPos(centre);
    if (monitor.screenBox.width() == 0)
        monitor = Tela::getPrimaryMonitor();
    const Qv::Box<int> screen = monitor.screenBox;
    const int width = std::abs(screen.width()), height = std::abs(screen.height());
    // A maximised window that would not fit comes back smaller, centred; a
    // normal one stays where it was, on screen or not.
    if (args.maximised() && !(args.size.x < width && args.size.y < height)) {
        args.size = XY<int>(static_cast<int>(static_cast<float>(width) * RESCUE_FRACTION),
                            static_cast<int>(static_cast<float>(height) * RESCUE_FRACTION));
        args.position = XY<int>(screen.x1 + (width - args.size.x) / 2, screen.y1 + (height - args.size.y) / 2);
    }
    return args;
}

void Tela::saveRootWindowPlacement()
{
    Canvas* root = tela_rootcanvas();
    if (!root || !root->window)
        return;
    const Qv::Ptr<iRootWindow>& window = root->window;
    const bool title = window->hasTitleBar();
    const bool maximised = window->isMaximized();
    XY<int> size, position;
    window->getSize(size);
    window->getPosition(position);
    const WString application = OS()->fileSystem()->applicationName();
    if (!title || maximised) {
        // Only a normal window's geometry is worth keeping.
        const iRootWindow::InitArgs stored = RootWindowEventHandler::restoreWindowState(application);
        size = stored.size;
        position = stored.position;
    }
    JSON::Builder builder(2);
    builder.startChild(nullptr);
    builder.add("title", title);
    builder.add("maximised", !(title && !maximised));
    builder.add("x", position.x);
    builder.add("y", position.y);
    builder.add("width", size.x);
    builder.add("height", size.y);
    builder.endChild();
    prefs().setPreference(key_for(application, " : Window").c_str(), builder.getOutput());
}
