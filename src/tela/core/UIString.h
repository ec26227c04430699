#pragma once
// UIString: a text shown to the user, held either as literal characters or as
// a resource number looked up when the text is first needed.
//
// Invariants
// - resourceId NO_RESOURCE (999999) means "no resource": the text is whatever
//   `text` holds, possibly nothing.
// - Once a lookup has filled `text`, `text` wins over the resource number, so
//   the lookup happens at most once.

#include "tela/core/LightweightString.h"

#include <cstdint>

using ResId = std::uint32_t;
using ResStrFmt = std::uint32_t;

struct UIString {
    static constexpr ResId NO_RESOURCE = 999999;
    static constexpr std::uint32_t APPEND_ELLIPSIS = 1; // flags bit 0: ".." after a lookup

    UIString() = default;
    // A resource to be looked up later: UIString{999999, 0, 0} is "no text".
    UIString(ResId resource, ResStrFmt resource_format = 0, std::uint32_t resource_flags = 0)
        : resourceId(resource), format(resource_format), flags(resource_flags) {}
    // Literal characters, no resource behind them.
    explicit UIString(const WString& literal) : text(literal) {}

    bool hasResource() const { return resourceId != NO_RESOURCE; }

    WString text;
    ResId resourceId = NO_RESOURCE;
    ResStrFmt format = 0;
    std::uint32_t flags = 0;
};
