#pragma once
// WrappedData<T>: a copy of a plain value as a counted payload, for
// notifications and events that carry one.

#include "tela/core/RefCount.h"

template <typename T>
class WrappedData : public iObject {
public:
    explicit WrappedData(const T& wrapped) : value(wrapped) {}
    T value;
};
