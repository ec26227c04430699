#pragma once
// Update tracking: what changed is recorded per canvas and shown when the
// refresh is on. tela_refresh_off/on nest through one counter; scopes use
// Tela::UpdateDeferrer so that a whole change repaints at most once.

#include "core/RefCount.h"

class Canvas;

// Draw debugging: non-zero traces updates and flashes blitted areas; 2 or
// more also makes every refresh immediate.
extern int canvupdTrace;

// 0 at rest; each off lowers it, each on raises it. Off may be called from
// any thread.
void tela_refresh_off();
void tela_refresh_on(bool present);
bool tela_refresh_is_active();
int tela_refresh_counter();

// Forgets the canvas's damage.
void canvupd_mark_clean(Canvas* canvas);

namespace Tela {

bool isPresentationEnabled();
void setPresentationEnabled(bool enabled);

// Refresh off for the life of the scope; on again, with `present`, at its end.
// A copy takes the two fields and no second refresh_off, so it unbalances
// the counter: the library never copies one.
class UpdateDeferrer : public iObject {
public:
    UpdateDeferrer(Canvas* canvas, bool present);
    UpdateDeferrer(const UpdateDeferrer& other);
    UpdateDeferrer& operator=(const UpdateDeferrer&) = delete;
    ~UpdateDeferrer() override;

private:
    Canvas* m_canvas;
    bool m_present;
};

} // namespace Tela

// The presentation setting as the library's own deferrers read it.
inline bool tela_refresh_presentation()
{
    return Tela::isPresentationEnabled();
}
