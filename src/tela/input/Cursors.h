#pragma once
// Mouse cursors, by number. Numbers 16 to 36 are images in the icons
// directory ("Default.png", "PointingHand.png", ...), scaled to the screen's
// density; every other number, and an image that cannot be loaded, is one
// of the windowing system's own. Each cursor is made once and kept.
//
// The cursor follows the canvas under the pointer: its client names it
// (CanvasClient::contextCursor), and a pointer over no client gets 16.

#include "tela/core/LightweightString.h"
#include "tela/events/Deferred.h"

#include <cstdint>

using MouseCursorID = std::int32_t;
constexpr MouseCursorID BUSY_CURSOR = 13;
constexpr MouseCursorID DEFAULT_CURSOR = 16;

// The image file of a cursor; empty for a number without one. Whether the
// file exists is not checked.
WString tela_getCursorFile(MouseCursorID id);
// Shows the cursor now.
void tela_setCursor(MouseCursorID id);
// Shows the cursor the canvas under the pointer asks for.
void tela_updateMouseCursor();

namespace Tela {

// Immediately: the canvas under the pointer is looked for again (unless the
// mouse is captured), then its cursor shown. Otherwise the same is deferred,
// which is safe on any thread and after changes to the canvas tree.
void updateMouseCursor(bool immediate);

// The deferred form of updateMouseCursor: runs it immediately, later.
class UpdateMouseCursorAction final : public iExecutableAction {
public:
    void execute() override;
};

// Where cursor images are looked for; by default "icons" in the settings
// directory. Ends with a separator.
WString getIconsDirectory();
void setIconsDirectory(const WString& directory);

} // namespace Tela
