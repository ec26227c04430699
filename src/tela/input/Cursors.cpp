#include "tela/input/Cursors.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/canvas/Picking.h"
#include "tela/core/Log.h"
#include "tela/core/NeverDestroyed.h"
#include "tela/core/SettingsFile.h"
#include "tela/events/Deferred.h"
#include "tela/input/MouseState.h"
#include "tela/platform/iFileSystemService.h"
#include "tela/platform/ImageLoader.h"
#include "tela/platform/iSystemInfo.h"
#include "tela/platform/OS.h"
#include "tela/state/TelaState.h"

#include <atomic>
#include <cmath>

namespace {

struct CursorFile {
    MouseCursorID id;
    const char* name;
};

constexpr CursorFile CURSOR_FILES[] = {
    {16, "Default"}, {17, "DragDrop1"}, {18, "DragDrop2"}, {19, "DragDrop3"},
    {20, "PointingHand"}, {21, "MoveUpDownLeftRight"}, {22, "MoveLeftRight"}, {23, "MoveUpDown"},
    {24, "MoveControlPoint"}, {25, "Move2"}, {26, "ColourPick"}, {27, "Trim"},
    {28, "TrimIn"}, {29, "TrimOut"}, {30, "TrimBoth"}, {31, "DragDrop4"},
    {32, "DragDrop5"}, {33, "DragDrop6"}, {34, "DragDrop7"}, {35, "PointMoveCursor"},
    {36, "Pen"},
};

WString& icons_directory()
{
    // Never destroyed, like the rest of the library's strings on the platform heap.
    static Qv::NeverDestroyed<WString> directory(fromUTF8(Qv::defaultSettingsDirectory() + String("/icons/")));
    return *directory;
}

// The first fully opaque pixel in memory order. Cursor images are square,
// so the row is the index over either side.
XY<int> hot_spot(const Qv::Ptr<iHostImage>& image)
{
    XY<int> size;
    image->getSize(size);
    const std::uint8_t* pixels = image->data();
    const long count = static_cast<long>(size.x) * size.y;
    for (long i = 0; pixels && size.x > 0 && size.y > 0 && i < count; ++i)
        if (pixels[i * 4 + 3] == 255)
            return XY<int>(static_cast<int>(i % size.x), static_cast<int>(i / size.y));
    return XY<int>(0, 0);
}

// A program that ships no cursor images has no icons folder; that is said
// once, and its files are then not tried one by one, each failing aloud.
bool icons_folder_present()
{
    const WString directory = Tela::getIconsDirectory();
    if (OS()->fileSystem()->isDirectory(directory))
        return true;
    static std::atomic<bool> reported{false};
    if (!reported.exchange(true))
        murl_printf("Cursors: no icons folder at %s; using the system's cursors\n", toUTF8(directory).c_str());
    return false;
}

Qv::Ptr<iCursor> make_cursor(MouseCursorID id)
{
    Qv::Ptr<iCursor> cursor;
    const WString file = tela_getCursorFile(id);
    Qv::Ptr<iHostImage> image;
    if (!file.empty() && icons_folder_present())
        image = QvImage::Loader::loadImage(file);
    if (image) {
        const float scale = OS()->systemInfo()->uiScale();
        if (scale != 1.0f) {
            XY<int> size;
            image->getSize(size);
            const auto scaled = [scale](int side) {
                return static_cast<int>(static_cast<std::uint16_t>(std::trunc(side * scale + 0.5)));
            };
            image = QvImage::createResizedIcon(image, XY<int>(scaled(size.x), scaled(size.y)));
        }
    }
    if (image)
        OS()->windowing()->createCursor(cursor, image, hot_spot(image));
    if (!cursor)
        OS()->windowing()->createStockCursor(cursor, id);
    return cursor;
}

} // namespace

WString tela_getCursorFile(MouseCursorID id)
{
    for (const CursorFile& entry : CURSOR_FILES)
        if (entry.id == id)
            return Tela::getIconsDirectory() + fromUTF8(entry.name) + WString(u".png");
    return WString();
}

void tela_setCursor(MouseCursorID id)
{
    TelaState& state = tela_state();
    Qv::Ptr<iCursor> cursor;
    {
        CriticalSection::Guard guard(state.cursorLock);
        const auto found = state.cursorCache.find(id);
        if (found != state.cursorCache.end()) {
            cursor = found->second;
        } else {
            cursor = make_cursor(id);
            state.cursorCache.insert_or_assign(id, cursor);
        }
    }
    if (cursor)
        OS()->windowing()->selectCursor(cursor);
}

void TelaState::updateCursor()
{
    if (!tela_isMouseContextLogicEnabled())
        return;
    Canvas* const canvas = currentMouseCanvas;
    if (!canvas || !canvas->client) {
        tela_setCursor(DEFAULT_CURSOR);
        return;
    }
    tela_setCursor(canvas->client->contextCursor(tela_getMousePos()));
}

void tela_updateMouseCursor()
{
    tela_state().updateCursor();
}

void Tela::UpdateMouseCursorAction::execute()
{
    updateMouseCursor(true);
}

void Tela::updateMouseCursor(bool immediate)
{
    if (!immediate) {
        defer(Qv::Ptr<iExecutableAction>(Qv::make<UpdateMouseCursorAction>()));
        return;
    }
    TelaState& state = tela_state();
    if (!state.captureCanvas)
        state.currentMouseCanvas = canvas_pick(tela_rootcanvas(), tela_getMousePos());
    state.updateCursor();
}

WString Tela::getIconsDirectory()
{
    return icons_directory();
}

void Tela::setIconsDirectory(const WString& directory)
{
    WString& stored = icons_directory();
    stored = directory;
    if (!stored.empty() && stored[stored.length() - 1] != u'/')
        stored = stored + WString(u"/");
}
