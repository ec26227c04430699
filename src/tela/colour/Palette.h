#pragma once
// Palette: the look of a panel, eight named colours and a contrast factor.
// Every derived shade (buttons, child windows, popups, dimmed text, an
// unfocused selection) is computed here from the window colour and the
// contrast, so one base colour and one number drive the whole appearance.
//
// - A value: copy it, pass it, derive from it with the make...Palette family.
// - Colours stored by a setter or by assigning a palette have alpha 1 (they
//   go through Colour's assignment); copy construction keeps alpha.
// - The defaults are shared constants built once, safely from any thread.
//   "Brighten" in the configuration lightens (or, negative, darkens) the
//   default window colour; nothing else at run time changes them.

#include "tela/colour/Colour.h"

// Shade steps above (positive) or below (negative) the window colour. Any
// signed char is a shade; these are the ones with a scale factor of their own.
enum eWindowShade : signed char {
    eWindowShadow = -3,
    eWindowDarker = -2,
    eWindowDark = -1,
    eWindowNormal = 0,
    eWindowLight = 1,
    eWindowLighter = 3,
    eWindowHighlight = 7,
};

enum eChildWindowType : int {
    eChildLighter = 0, // scaled by 1.2
    eChildDarker = 1,  // scaled by 0.9
};

enum eTextAppearance : int {
    eTextNormal = 0,
    eTextStronglyDimmed = 1, // 30 per cent text colour at contrast 1
    eTextLightlyDimmed = 2,  // 75 per cent
};

enum eSelectionAppearance : int {
    eSelectionFocused = 0,   // the selection colour itself
    eSelectionUnfocused = 1, // (or any other value) blended towards the window
};

class Palette {
public:
    // Lifetime
    Palette();                                            // every colour its default, contrast 1
    Palette(const Colour& window);                        // headings take the text colour
    Palette(const Colour& text, const Colour& window);    // text first; headings take the default text
    Palette(const Palette& other) = default;
    Palette& operator=(const Palette& other) = default;
    virtual ~Palette() = default;

    // The shared defaults
    static const Colour& defaultWindow();
    static const Colour& defaultText();
    static const Colour& defaultHeadingText();
    static const Colour& defaultSubheadingText();
    static const Colour& defaultSelectedText();
    static const Colour& defaultSelection();
    static const Colour& defaultWarning();
    static const Colour& defaultSuccess();
    static const Colour& toolTipBase();
    static const Colour& toolTipText();
    static const Palette& getDefault();

    // Setters
    void setWindow(const Colour& colour) { m_window = colour; }
    void setText(const Colour& colour) { m_text = colour; }
    void setHeadingText(const Colour& colour) { m_headingText = colour; }
    void setSubheadingText(const Colour& colour) { m_subheadingText = colour; }
    void setSelectedText(const Colour& colour) { m_selectedText = colour; }
    void setSelection(const Colour& colour) { m_selection = colour; }
    void setWarning(const Colour& colour) { m_warning = colour; }
    void setSuccess(const Colour& colour) { m_success = colour; }
    void setContrast(float contrast) { m_contrast = contrast; }

    // The stored colours
    const Colour& headingText() const { return m_headingText; }
    const Colour& subheadingText() const { return m_subheadingText; }
    const Colour& selectedText() const { return m_selectedText; }
    const Colour& success() const { return m_success; }
    const Colour& warning() const { return m_warning; }
    float contrast() const { return m_contrast; }

    // Derived colours
    // The window colour moved by `shade` steps of 0.035 on every channel; a
    // step below the window is smaller for a dark window, so shadows keep
    // their distance from black.
    Colour window(signed char shade) const;
    Colour window(eWindowShade shade) const { return window(static_cast<signed char>(shade)); }
    Colour highlight() const { return window(eWindowHighlight); }
    Colour shadow() const { return window(eWindowShadow); }
    Colour button() const;
    Colour doIt() const; // the button that carries out the panel's action
    Colour childWindow(eChildWindowType type) const;
    Colour text(eTextAppearance appearance) const;
    Colour selection(eSelectionAppearance appearance) const;
    // c scaled by f, with f pushed further from 1 by the contrast.
    Colour scale(const Colour& c, double f) const;

    static double getScaleFactor(eChildWindowType type);
    static double getScaleFactor(eWindowShade shade);

    // Equal when text, window, selection, the headings, warning and success
    // are; the selected text and the contrast do not count.
    bool operator==(const Palette& other) const;
    bool operator!=(const Palette& other) const { return !(*this == other); }

    // Moves the window, text, selection and heading colours towards white by
    // (factor - 1) / 2 and marks them as device values; 1 keeps the channels.
    void brighten(float factor);

private:
    double contrastify(double f) const;

    Colour m_window;
    Colour m_text;
    Colour m_headingText;
    Colour m_subheadingText;
    Colour m_selectedText;
    Colour m_selection;
    Colour m_warning;
    Colour m_success;
    float m_contrast = 1.0f;
};

// Copies of `p` with one or two colours replaced.
Palette makeWindowPalette(const Palette& p, const Colour& window);
Palette makeWindowPalette(const Palette& p, eWindowShade shade);
Palette makeChildPalette(const Palette& p, eChildWindowType type);
Palette makeButtonPalette(const Palette& p);
Palette makeTextPalette(const Palette& p, const Colour& text);
Palette makeTextPalette(const Palette& p, eTextAppearance appearance);
// Two shades lighter, with the text lifted a little to match.
Palette makePopupPalette(const Palette& p);

// A 24-bit number (red in the high byte) as a device colour, and back. A
// colour without the bypass flag goes through the gamma curve on the way out,
// so toHex(fromHex(x)) is x.
Colour fromHex(unsigned int rgb);
unsigned int toHex(const Colour& colour);
