// ScopeGuard: runs a callable at the end of the scope. Name the guard after what it undoes.
#pragma once

#include <utility>

template <typename Callback>
class ScopeGuard {
public:
    explicit ScopeGuard(Callback callback) : m_callback(std::move(callback)) {}
    ~ScopeGuard() { m_callback(); }
    ScopeGuard(const ScopeGuard&) = delete;
    ScopeGuard& operator=(const ScopeGuard&) = delete;
private:
    Callback m_callback;
};

// Sets a variable for the scope and puts the old value back on every path.
template <typename T>
class TemporaryChange {
public:
    TemporaryChange(T& variable, T value) : m_variable(variable), m_old(std::exchange(variable, std::move(value))) {}
    ~TemporaryChange() { m_variable = std::move(m_old); }
    TemporaryChange(const TemporaryChange&) = delete;
    TemporaryChange& operator=(const TemporaryChange&) = delete;
private:
    T& m_variable;
    T m_old;
};
