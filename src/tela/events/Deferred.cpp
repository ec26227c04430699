#include "tela/events/Deferred.h"

#include "tela/core/Threads.h"
#include "tela/events/Event.h"
#include "tela/events/EventQueue.h"
#include "tela/platform/iFileSystemService.h"
#include "tela/platform/iShellService.h"
#include "tela/platform/OS.h"

#include <algorithm>
#include <utility>

namespace {

// The event that carries a wrapper: the queue holds the only counted
// reference, so the wrapper dies with the event, delivered or not.
void send_wrapper(Qv::Ptr<FunctionWrapper> wrapper, Canvas* canvas, const String& id, bool checkTarget)
{
    Event event;
    event.type = EventType::MESSAGE;
    event.canvas = canvas;
    event.message(id);
    // The wrapper is the handler and the payload; the sender's reference
    // becomes the event's.
    event_send_owning(&event, std::move(wrapper), checkTarget);
}

std::function<void()> running(Qv::Ptr<iExecutableAction> action)
{
    return [action = std::move(action)] { action->execute(); };
}

} // namespace

static_assert(sizeof(FunctionWrapper) <= OWNED_HANDLER_BLOCK, "a wrapper's block should come from the queue's pool");

void* FunctionWrapper::operator new(std::size_t bytes)
{
    return event_owned_handler_allocate(bytes);
}

void FunctionWrapper::operator delete(void* block, std::size_t bytes) noexcept
{
    event_owned_handler_release(block, bytes);
}

EventHandler::eResult FunctionWrapper::handleEvent(const Event&)
{
    m_function();
    return eHandled;
}

void defer(const std::function<void()>& function, Canvas* canvas)
{
    send_wrapper(Qv::make<FunctionWrapper>(function), canvas, String(), false);
}

void defer(Qv::Ptr<iExecutableAction> action, Canvas* canvas)
{
    if (action)
        defer(running(std::move(action)), canvas);
}

void deferUnique(const std::function<void()>& function, const String& id, Canvas* canvas)
{
    Qv::Ptr<FunctionWrapper> wrapper = Qv::make<FunctionWrapper>(function);
    // The pending event keeps its place but loses its wrapper, whose death
    // flushes what is queued for it: that very event. Neither runs.
    if (event_replace_queued_data(EventType::MESSAGE, id, canvas, wrapper))
        return;
    send_wrapper(std::move(wrapper), canvas, id, true);
}

void executeInMainThread(const std::function<void()>& function)
{
    if (isMainThread())
        function();
    else
        defer(function, nullptr);
}

void executeInMainThread(Qv::Ptr<iExecutableAction> action)
{
    if (action)
        executeInMainThread(running(std::move(action)));
}

void Tela::DocumentViewAction::execute()
{
    OS()->shell()->viewDocument(m_path);
}

void Tela::FileRevealAction::execute()
{
    for (const WString& path : m_paths)
        OS()->shell()->revealFile(path);
}

void Tela::viewDocument(const WString& path)
{
    if (!path.empty())
        defer(Qv::make<DocumentViewAction>(path));
}

void Tela::revealFiles(const std::vector<WString>& paths)
{
    Qv::Vector<WString> files;
    for (const WString& path : paths)
        if (!OS()->fileSystem()->isDirectory(path))
            files.push_back(path);
    // In order, once each: the browser shows the set, not the request.
    std::sort(files.begin(), files.end());
    files.erase(std::unique(files.begin(), files.end()), files.end());
    if (!files.empty())
        defer(Qv::make<FileRevealAction>(std::move(files)));
}
