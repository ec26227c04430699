#pragma once
// Deferred work: a function or action wrapped as an event and sent through
// the one queue, so it runs on the main thread, after the current call stack,
// in order with every other event. There is no queue of its own.
//
// - Any thread may defer. The work runs from the dispatcher, outside any
//   UpdateDeferrer scope.
// - Deferring with a canvas binds the work to the canvas: a flush for it (a
//   deleted canvas is flushed) cancels the work, which then never runs.
// - deferUnique with an id and canvas already pending cancels the pending one
//   and queues nothing: two calls run neither, a third starts afresh.

#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/events/EventHandler.h"

#include <functional>
#include <vector>

class Canvas;

// Work that can be deferred as an object.
class iExecutableAction : public virtual iObject {
public:
    virtual void execute() = 0;
};

// A member function of a counted object, called with a copy of the argument
// it was made with. The object is kept alive until the call.
template <typename Object, typename T>
class DeferableMethodCallback final : public iExecutableAction {
public:
    using Method = void (Object::*)(const T&);

    DeferableMethodCallback(Object* object, Method method, const T& argument)
        : m_object(object), m_method(method), m_argument(argument)
    {
    }
    void execute() override
    {
        if (m_object && m_method)
            (m_object.get()->*m_method)(m_argument);
    }

private:
    Qv::Ptr<Object> m_object;
    Method m_method;
    T m_argument;
};

// The handler a deferred function is sent to: any event runs the function.
// Its storage is the queue's, which reuses the blocks of delivered actions.
class FunctionWrapper : public EventHandler {
public:
    explicit FunctionWrapper(std::function<void()> function) : m_function(std::move(function)) {}
    eResult handleEvent(const Event& event) override;

    static void* operator new(std::size_t bytes);
    static void operator delete(void* block, std::size_t bytes) noexcept;

private:
    std::function<void()> m_function;
};

void defer(const std::function<void()>& function, Canvas* canvas = nullptr);
// A null action is ignored.
void defer(Qv::Ptr<iExecutableAction> action, Canvas* canvas = nullptr);
void deferUnique(const std::function<void()>& function, const String& id, Canvas* canvas = nullptr);
// Runs now on the main thread; from any other thread, defers.
void executeInMainThread(const std::function<void()>& function);
void executeInMainThread(Qv::Ptr<iExecutableAction> action);

namespace Tela {

// Opens the document with the desktop's viewer, later; an empty path does nothing.
void viewDocument(const WString& path);
// Shows the files (folders are skipped, duplicates dropped) in the desktop's
// file browser, later.
void revealFiles(const std::vector<WString>& paths);

class DocumentViewAction final : public iExecutableAction {
public:
    explicit DocumentViewAction(WString path) : m_path(std::move(path)) {}
    void execute() override;

private:
    WString m_path;
};

class FileRevealAction final : public iExecutableAction {
public:
    explicit FileRevealAction(Qv::Vector<WString> paths) : m_paths(std::move(paths)) {}
    void execute() override;

private:
    Qv::Vector<WString> m_paths;
};

} // namespace Tela
