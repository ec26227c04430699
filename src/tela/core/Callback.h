#pragma once
// iCallbackBase<R, T>: a counted callable taking a T. execute() is what
// callers use; executeInternal() is what implementations provide.

#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"

#include <functional>
#include <utility>

template <typename R, typename T>
class iCallbackBase : public virtual iObject {
public:
    virtual R execute(const T& argument) { return executeInternal(argument); }
    virtual R executeInternal(const T& argument) = 0;
};

namespace Qv {

// Wraps any function object.
template <typename R, typename T>
class FunctionCallback : public iCallbackBase<R, T> {
public:
    explicit FunctionCallback(std::function<R(const T&)> function) : m_function(std::move(function)) {}
    R executeInternal(const T& argument) override { return m_function ? m_function(argument) : R(); }

private:
    std::function<R(const T&)> m_function;
};

// Calls a member function on an object the callback does not own.
template <typename Object, typename R, typename T>
class MethodCallback : public iCallbackBase<R, T> {
public:
    using Method = R (Object::*)(const T&);
    MethodCallback(Object* object, Method method) : m_object(object), m_method(method) {}
    R executeInternal(const T& argument) override { return (m_object->*m_method)(argument); }

private:
    Object* m_object;
    Method m_method;
};

template <typename R, typename T>
Ptr<iCallbackBase<R, T>> makeCallback(std::function<R(const T&)> function)
{
    return Ptr<iCallbackBase<R, T>>(make<FunctionCallback<R, T>>(std::move(function)));
}

// The object must outlive the callback, or the callback must be dropped first.
template <typename Object, typename R, typename T>
Ptr<iCallbackBase<R, T>> makeCallback(Object* object, R (Object::*method)(const T&))
{
    return Ptr<iCallbackBase<R, T>>(make<MethodCallback<Object, R, T>>(object, method));
}

} // namespace Qv
