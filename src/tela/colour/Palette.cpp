#include "tela/colour/Palette.h"

#include "tela/core/Config.h"
#include "tela/core/HTMLUtils.h"

#include <algorithm>

namespace {

constexpr float SHADE_STEP = 0.035f;

// Each channel (1 - c) * k + c with k = (factor - 1) / 2: 1 keeps the colour,
// 2 goes half way to white, below 1 darkens. The result is a device colour.
Colour brightenColour(const Colour& c, float factor)
{
    const float k = (factor - 1.0f) * 0.5f;
    const auto lift = [k](float channel) { return (1.0f - channel) * k + channel; };
    return Colour(lift(c.r), lift(c.g), lift(c.b), true);
}

// "Brighten", at most 1, plus 1: read once per process.
float brighten_factor()
{
    static const float factor = static_cast<float>(std::min(config_double("Brighten", 0.0), 1.0) + 1.0);
    return factor;
}

} // namespace

Colour fromHex(unsigned int rgb)
{
    const NormalisedRGB channels = HTMLUtils::fromHex(rgb);
    return Colour(channels.r, channels.g, channels.b, true);
}

unsigned int toHex(const Colour& colour)
{
    return HTMLUtils::toHex(fromColour(colour));
}

const Colour& Palette::defaultWindow()
{
    static const Colour colour = brightenColour(fromHex(0x282C30), brighten_factor());
    return colour;
}

const Colour& Palette::defaultText()
{
    static const Colour colour = fromHex(0xC6CDCF);
    return colour;
}

const Colour& Palette::defaultHeadingText()
{
    static const Colour colour = fromHex(0xFFFFFF);
    return colour;
}

const Colour& Palette::defaultSubheadingText()
{
    static const Colour colour = fromHex(0xF6B73B);
    return colour;
}

const Colour& Palette::defaultSelectedText()
{
    static const Colour colour = fromHex(0xCCF7FF);
    return colour;
}

const Colour& Palette::defaultSelection()
{
    static const Colour colour = fromHex(0x1F5D7D);
    return colour;
}

const Colour& Palette::defaultWarning()
{
    static const Colour colour = fromHex(0xFF1810);
    return colour;
}

const Colour& Palette::defaultSuccess()
{
    static const Colour colour(0.1, 0.7, 0.3, true);
    return colour;
}

const Colour& Palette::toolTipBase()
{
    static const Colour colour = fromHex(0xC8D7E8);
    return colour;
}

const Colour& Palette::toolTipText()
{
    static const Colour colour = fromHex(0x0D131B);
    return colour;
}

const Palette& Palette::getDefault()
{
    static const Palette palette;
    return palette;
}

Palette::Palette()
    : m_window(defaultWindow()), m_text(defaultText()), m_headingText(defaultHeadingText()),
      m_subheadingText(defaultSubheadingText()), m_selectedText(defaultSelectedText()),
      m_selection(defaultSelection()), m_warning(defaultWarning()), m_success(defaultSuccess())
{
}

// Only the default palette has white headings: a palette made for a given
// window has headings in its text colour, and panels rely on the difference.
Palette::Palette(const Colour& window)
    : m_window(window), m_text(defaultText()), m_headingText(defaultText()),
      m_subheadingText(defaultSubheadingText()), m_selectedText(defaultSelectedText()),
      m_selection(defaultSelection()), m_warning(defaultWarning()), m_success(defaultSuccess())
{
}

Palette::Palette(const Colour& text, const Colour& window)
    : m_window(window), m_text(text), m_headingText(defaultText()), m_subheadingText(defaultSubheadingText()),
      m_selectedText(defaultSelectedText()), m_selection(defaultSelection()), m_warning(defaultWarning()),
      m_success(defaultSuccess())
{
}

Colour Palette::window(signed char shade) const
{
    float step = SHADE_STEP;
    if (shade < 0)
        step = std::min(SHADE_STEP, m_window.brightness() / 3.0f);
    const double offset = static_cast<float>(shade * step);
    // Additive, not the scale factors of getScaleFactor(eWindowShade).
    return offsetColour(m_window, offset, offset, offset);
}

Colour Palette::button() const
{
    return ::scale(window(eWindowNormal), 1.45);
}

Colour Palette::doIt() const
{
    return ::scale(button(), 1.2);
}

Colour Palette::childWindow(eChildWindowType type) const
{
    return scale(m_window, getScaleFactor(type));
}

Colour Palette::text(eTextAppearance appearance) const
{
    switch (appearance) {
    case eTextNormal: return scale(m_text, 1.0);
    case eTextStronglyDimmed: return Colour::mix(m_text, m_window, 0.3 / m_contrast);
    case eTextLightlyDimmed: return Colour::mix(m_text, m_window, 0.75 / m_contrast);
    }
    return Colour();
}

Colour Palette::selection(eSelectionAppearance appearance) const
{
    if (appearance == eSelectionFocused)
        return m_selection;
    return Colour::mix(m_window, m_selection, 0.6);
}

Colour Palette::scale(const Colour& c, double f) const
{
    return ::scale(c, contrastify(f));
}

double Palette::contrastify(double f) const
{
    return f < 1.0 ? f / m_contrast : f * m_contrast;
}

double Palette::getScaleFactor(eChildWindowType type)
{
    switch (type) {
    case eChildLighter: return 1.2;
    case eChildDarker: return 0.9;
    }
    return 1.0;
}

double Palette::getScaleFactor(eWindowShade shade)
{
    switch (shade) {
    case eWindowShadow: return 0.3;
    case eWindowDarker: return 0.6;
    case eWindowDark: return 0.8;
    case eWindowLight: return 1.2;
    case eWindowLighter: return 1.5;
    case eWindowHighlight: return 2.5;
    case eWindowNormal: break;
    }
    return 1.0;
}

bool Palette::operator==(const Palette& other) const
{
    return m_text == other.m_text && m_window == other.m_window && m_selection == other.m_selection &&
           m_headingText == other.m_headingText && m_warning == other.m_warning && m_success == other.m_success &&
           m_subheadingText == other.m_subheadingText;
}

void Palette::brighten(float factor)
{
    m_window = brightenColour(m_window, factor);
    m_text = brightenColour(m_text, factor);
    m_selection = brightenColour(m_selection, factor);
    m_subheadingText = brightenColour(m_subheadingText, factor);
    m_headingText = brightenColour(m_headingText, factor);
}

Palette makeWindowPalette(const Palette& p, const Colour& window)
{
    Palette result(p);
    result.setWindow(window);
    return result;
}

Palette makeWindowPalette(const Palette& p, eWindowShade shade)
{
    return makeWindowPalette(p, p.window(shade));
}

Palette makeChildPalette(const Palette& p, eChildWindowType type)
{
    return makeWindowPalette(p, p.childWindow(type));
}

Palette makeButtonPalette(const Palette& p)
{
    return makeWindowPalette(p, p.button());
}

Palette makeTextPalette(const Palette& p, const Colour& text)
{
    Palette result(p);
    result.setText(text);
    return result;
}

Palette makeTextPalette(const Palette& p, eTextAppearance appearance)
{
    return makeTextPalette(p, p.text(appearance));
}

Palette makePopupPalette(const Palette& p)
{
    Palette result = makeWindowPalette(p, p.window(static_cast<signed char>(2)));
    result.setText(offsetColour(p.text(eTextNormal), 0.05, 0.05, 0.05));
    return result;
}
