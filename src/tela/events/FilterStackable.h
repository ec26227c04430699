#pragma once
// FilterStackable<T>: what an intercept stack holds. `context` is the value the
// entry was registered with; a non-zero result stops the run.

template <typename T>
class FilterStackable {
public:
    virtual int fsFilterThis(const T& item, void* context) = 0;

protected:
    ~FilterStackable() = default;
};
