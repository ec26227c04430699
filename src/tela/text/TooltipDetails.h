#pragma once
// TooltipDetails: what a tool tip is to show, as a value: lines of up to two
// texts (a label and the text) and a key, and the fields its display code
// reads. Nothing here draws.
//
// - Texts are UIStrings: a resource number is looked up when the text is
//   first needed, and the result is kept (see resolveUIString).
// - A line keeps its label's resource number but only the characters of its
//   text: addLine looks the text up at once.
// - Two details are equal when their lines are, one by one; the title,
//   position, style and extra text play no part. Comparing lines looks their
//   labels and texts up, so it may fill them in; that is why those fields are
//   mutable.
// - A string with no characters equals a null one.

#include "tela/core/LightweightString.h"
#include "tela/core/UIString.h"
#include "tela/platform/Geometry.h"

#include <cstdint>
#include <vector>

class TooltipDetails {
public:
    class Line {
    public:
        Line(const WString& s);
        Line(const Line&) = default;
        Line(Line&&) noexcept = default;
        Line& operator=(const Line&) = default;
        Line& operator=(Line&&) noexcept = default;

        bool operator==(const Line& other) const;
        bool operator!=(const Line& other) const;

        mutable UIString text;
        mutable UIString label;
        String key;
    };

    TooltipDetails() = default;
    TooltipDetails(const UIString& label, const UIString& text);
    TooltipDetails(const UIString& text);
    TooltipDetails(const WString& s);
    TooltipDetails(ResId id);
    TooltipDetails(const TooltipDetails&) = default;
    TooltipDetails(TooltipDetails&& other) noexcept;
    TooltipDetails& operator=(const TooltipDetails&) = default;
    TooltipDetails& operator=(TooltipDetails&& other) noexcept;

    // Adds nothing when the label, the text and the key are all empty once
    // looked up.
    void addLine(const UIString& label, const UIString& text, const String& key);
    void addLine(const UIString& text, const String& key);

    bool empty() const;
    bool operator==(const TooltipDetails& other) const;
    bool operator!=(const TooltipDetails& other) const;

    UIString title;
    std::vector<Line> lines;
    XY<int> position {-1, -1};
    std::uint32_t style = 0;
    WString extraText;
};
