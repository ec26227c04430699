#include "input/MouseContainmentManager.h"

#include "canvas/Canvas.h"
#include "canvas/CanvasTree.h"
#include "core/Memory.h"

#include <algorithm>
#include <new>

namespace Tela {

namespace {

// Outermost first. Main thread only. Never destroyed: canvases may still
// be removed from it while statics are torn down.
Qv::Vector<Canvas*>& containers()
{
    alignas(Qv::Vector<Canvas*>) static unsigned char storage[sizeof(Qv::Vector<Canvas*>)];
    static auto* chain = ::new (storage) Qv::Vector<Canvas*>();
    return *chain;
}

} // namespace

bool MouseContainmentManager::isChildOf(const Canvas* child, const Canvas* parent)
{
    if (!child || !parent || child == parent)
        return false;
    for (const Canvas* c = child->parent; c; c = c->parent)
        if (c == parent)
            return true;
    return false;
}

Canvas* MouseContainmentManager::getCurrentCanvas()
{
    return containers().empty() ? nullptr : containers().back();
}

void MouseContainmentManager::setCurrentCanvas(Canvas* canvas)
{
    Qv::Vector<Canvas*>& chain = containers();
    if (!chain.empty() && chain.back() == canvas)
        return;
    while (!chain.empty()) {
        Canvas* const last = chain.back();
        if (last == canvas || (canvas && isChildOf(canvas, last)))
            break;
        chain.pop_back();
        last->handleMouseContainment(false);
    }
    if (!canvas)
        return;
    Canvas* const stop = chain.empty() ? nullptr : chain.back();
    Qv::Vector<Canvas*> entering;
    entering.reserve(20);
    for (Canvas* c = canvas; c && c != stop; c = c->parent)
        entering.push_back(c);
    // Outermost first; a callback that moves the next one out of this one
    // ends the entering there.
    for (auto it = entering.rbegin(); it != entering.rend(); ++it) {
        chain.push_back(*it);
        (*it)->handleMouseContainment(true);
        const auto next = std::next(it);
        if (next != entering.rend() && !canvas_is_child(*it, *next))
            break;
    }
}

void MouseContainmentManager::remove(const Canvas* canvas)
{
    Qv::Vector<Canvas*>& chain = containers();
    const auto found = std::find(chain.begin(), chain.end(), canvas);
    if (found != chain.end())
        chain.erase(found);
}

} // namespace Tela
