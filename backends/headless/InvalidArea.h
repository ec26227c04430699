// InvalidArea: what a window has been asked to repaint since its last paint,
// gathered as a region in window coordinates; "all of it" once any request
// was for the whole window.
#pragma once

#include "tela/core/Ptr.h"
#include "tela/platform/iRegion.h"

namespace Headless {

class InvalidArea {
public:
    // A null region asks for the whole window.
    void add(const Qv::Ptr<iRegion>& region)
    {
        if (!region) {
            m_whole = true;
        } else if (!m_region) {
            region->translated(m_region, 0, 0);
        } else {
            Qv::Ptr<iRegion> united;
            m_region->united(united, region);
            m_region = united;
        }
    }
    // What a paint event carries: null for the whole window. Starts afresh.
    Qv::Ptr<iRegion> take()
    {
        Qv::Ptr<iRegion> region = m_whole ? nullptr : m_region;
        clear();
        return region;
    }
    void clear()
    {
        m_region = nullptr;
        m_whole = false;
    }

    const Qv::Ptr<iRegion>& region() const { return m_region; }   // the parts asked for
    bool whole() const { return m_whole; }

private:
    Qv::Ptr<iRegion> m_region;
    bool m_whole = false;
};

} // namespace Headless
