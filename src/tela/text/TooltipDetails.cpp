#include "tela/text/TooltipDetails.h"

#include "tela/core/Resources.h"

#include <utility>

namespace {

// Characters compare; a null string is an empty one.
bool same_text(const WString& a, const WString& b)
{
    return a.view() == b.view();
}

} // namespace

TooltipDetails::Line::Line(const WString& s) : text(s)
{
}

bool TooltipDetails::Line::operator==(const Line& other) const
{
    resolveUIString(label);
    resolveUIString(other.label);
    if (!same_text(label.text, other.label.text))
        return false;
    resolveUIString(text);
    resolveUIString(other.text);
    return same_text(text.text, other.text.text) && key.view() == other.key.view();
}

bool TooltipDetails::Line::operator!=(const Line& other) const
{
    return !(*this == other);
}

TooltipDetails::TooltipDetails(const UIString& label, const UIString& text)
{
    addLine(label, text, String());
}

TooltipDetails::TooltipDetails(const UIString& text)
{
    addLine(UIString(), text, String());
}

TooltipDetails::TooltipDetails(const WString& s) : TooltipDetails(UIString(s))
{
}

TooltipDetails::TooltipDetails(ResId id) : TooltipDetails(UIString(id, 0, 0))
{
}

TooltipDetails::TooltipDetails(TooltipDetails&& other) noexcept
    : title(std::move(other.title))
    , lines(std::move(other.lines))
    , position(other.position)
    , style(other.style)
    , extraText(std::move(other.extraText))
{
    other.lines.clear();   // a moved-from vector is only "valid": make it empty
}

TooltipDetails& TooltipDetails::operator=(TooltipDetails&& other) noexcept
{
    if (this != &other) {
        title = std::move(other.title);
        lines = std::move(other.lines);
        other.lines.clear();
        position = other.position;
        style = other.style;
        extraText = std::move(other.extraText);
    }
    return *this;
}

void TooltipDetails::addLine(const UIString& label, const UIString& text, const String& key)
{
    // The caller's strings are looked up in copies: they may be constants.
    UIString resolvedLabel = label;
    UIString resolvedText = text;
    resolveUIString(resolvedLabel);
    resolveUIString(resolvedText);
    if (resolvedLabel.text.empty() && resolvedText.text.empty() && key.empty())
        return;
    Line line(resolvedText.text);
    line.label = resolvedLabel;
    line.key = key;
    lines.push_back(std::move(line));
}

void TooltipDetails::addLine(const UIString& text, const String& key)
{
    addLine(UIString(), text, key);
}

bool TooltipDetails::empty() const
{
    return lines.empty() && extraText.empty();
}

bool TooltipDetails::operator==(const TooltipDetails& other) const
{
    if (lines.size() != other.lines.size())
        return false;
    for (std::size_t index = 0; index < lines.size(); ++index)
        if (lines[index] != other.lines[index])
            return false;
    return true;
}

bool TooltipDetails::operator!=(const TooltipDetails& other) const
{
    return !(*this == other);
}
