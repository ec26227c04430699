#include "canvas/UpdateTracking.h"

#include "app/Diagnostics.h"
#include "canvas/Canvas.h"

#include <atomic>

int canvupdTrace = 0;

namespace {
std::atomic<int> s_refresh_counter{0};
bool s_presentation_enabled = true;
} // namespace

void tela_refresh_off()
{
    s_refresh_counter.fetch_sub(1, std::memory_order_relaxed);
}

void tela_refresh_on(bool)
{
    const int counter = s_refresh_counter.fetch_add(1, std::memory_order_relaxed) + 1;
    if (counter > 0)
        tela_splat("too many tela_refresh_on() calls");
    // Showing the pending canvas arrives with the display pipeline.
}

bool tela_refresh_is_active()
{
    return canvupdTrace >= 2 || s_refresh_counter.load(std::memory_order_relaxed) >= 0;
}

int tela_refresh_counter()
{
    return s_refresh_counter.load(std::memory_order_relaxed);
}

void canvupd_mark_clean(Canvas* canvas)
{
    if (!canvas)
        return;
    canvas->dirty = 0;
    canvas->updateRegion = nullptr;
}

namespace Tela {

bool isPresentationEnabled()
{
    return s_presentation_enabled;
}

void setPresentationEnabled(bool enabled)
{
    s_presentation_enabled = enabled;
}

UpdateDeferrer::UpdateDeferrer(Canvas* canvas, bool present) : m_canvas(canvas), m_present(present)
{
    tela_refresh_off();
    if (m_canvas)
        m_canvas->beginRender();
}

UpdateDeferrer::UpdateDeferrer(const UpdateDeferrer& other)
    : Qv::InternalRefCount(other), iVirtual(other), iObject(other), m_canvas(other.m_canvas), m_present(other.m_present)
{
}

UpdateDeferrer::~UpdateDeferrer()
{
    if (m_canvas)
        m_canvas->endRender();
    tela_refresh_on(m_present);
}

} // namespace Tela
