#include "tela/text/Fonts.h"

#include "tela/canvas/Canvas.h"
#include "tela/core/Log.h"
#include "tela/core/NeverDestroyed.h"
#include "tela/core/Preferences.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"
#include "tela/state/TelaState.h"

#include <cstring>

namespace {

constexpr const char* DEFAULT_FONT_PREFERENCE = "Default font name";
// What mapFontSize measures: short, but with the round and the tall letters.
constexpr const char16_t* SIZING_SENTENCE = u"The quick brown fox";

// The fonts and the defaults, all the main thread's.
struct FontState {
    Qv::Vector<Qv::Ptr<GFONT>> table;
    String defaultName;                 // empty until first asked for
    unsigned short defaultSize = Tela::INITIAL_DEFAULT_FONT_SIZE;
    // Kept for the application: nothing here reads them.
    double fontScale = 1.0;
    std::int32_t fontScaleCount = 0;
};

FontState& font_state()
{
    // Never destroyed: a shut-down callback may empty the table after other
    // statics of the process are gone.
    static Qv::NeverDestroyed<FontState> state;
    return *state;
}

struct StrcmpLess {
    bool operator()(const String& a, const String& b) const { return std::strcmp(a.c_str(), b.c_str()) < 0; }
};

// The cache of mapFontSize, and the width of the sentence in the default font.
struct SizeMapping {
    Qv::Map<String, unsigned short, StrcmpLess> sizes;
    std::uint16_t targetWidth = 0;
    bool targetMeasured = false;
};

SizeMapping& size_mapping()
{
    static Qv::NeverDestroyed<SizeMapping> mapping;
    return *mapping;
}

// The window fonts are made through when the request names none.
Qv::Ptr<iRootWindow> root_window()
{
    Canvas* const root = tela_rootcanvas();
    return root ? root->getWindow() : Qv::Ptr<iRootWindow>();
}

// Names are ASCII family names; a stray byte above 127 is passed on as it is
// rather than read as UTF-8 (the family would not be found either way).
WString widen(const String& name)
{
    WString wide;
    for (const char c : name.view())
        wide += static_cast<char16_t>(static_cast<unsigned char>(c));
    return wide;
}

void add_to_table(Qv::Ptr<GFONT> entry)
{
    Qv::Vector<Qv::Ptr<GFONT>>& table = font_state().table;
    if (table.size() >= Tela::FONT_TABLE_LIMIT) {
        table.clear();
        murl_printf("Font table full - emptying\n");
    }
    table.push_back(std::move(entry));
}

Qv::Ptr<GFONT> find_or_create(String name, std::uint32_t style, unsigned short size, std::int32_t variant,
                              const Qv::Ptr<iRootWindow>& window)
{
    if (name.empty())
        name = getDefaultFontName(0);
    if (size == 0)
        size = getDefaultFontSize();
    const std::uint32_t window_id = window ? window->identity() : 0;

    for (const Qv::Ptr<GFONT>& entry : font_state().table) {
        if (entry->name == name && entry->variant == variant && entry->size == size &&
            entry->font->getStyle() == style && entry->windowId == window_id)
            return entry;
    }

    const Qv::Ptr<iRootWindow> maker = window ? window : root_window();
    Qv::Ptr<iFont> font;
    if (maker)
        font = maker->createFont(widen(name), size, style, static_cast<unsigned short>(variant));
    // No window to make it through, or a font without a height, is a font
    // that could not be loaded.
    if (!font || font->getMetrics().height == 0) {
        murl_printf("*** Failed to load Font ***\n");
        return nullptr;
    }

    const iFont::Metrics& metrics = font->getMetrics();
    auto entry = Qv::make<GFONT>();
    entry->name = name;
    entry->size = size;
    entry->variant = variant;
    entry->height = metrics.height;
    entry->ascent = metrics.ascent;
    entry->negatedDescent = static_cast<std::int16_t>(-metrics.descent);
    entry->baseline = metrics.ascent;
    entry->font = std::move(font);
    entry->windowId = window_id;
    add_to_table(entry);
    return entry;
}

} // namespace

unsigned short Tela::FontDesc::getSize() const
{
    return size != 0 ? size : getDefaultFontSize();
}

Qv::Ptr<iFont> Tela::loadFont(const FontDesc& desc, const Qv::Ptr<iRootWindow>& window)
{
    const Qv::Ptr<GFONT> entry = find_or_create(desc.name, desc.style, desc.size, 0, window);
    if (entry && entry->font)
        return entry->font;
    // The one fallback: the default family at the same size and style. When
    // the request was for the default family already, that has just failed
    // and would only fail and be reported again.
    const String fallback = getDefaultFontName(0);
    if (desc.name.empty() || desc.name == fallback)
        return nullptr;
    const Qv::Ptr<GFONT> substitute = find_or_create(fallback, desc.style, desc.size, 0, window);
    return substitute ? substitute->font : Qv::Ptr<iFont>();
}

Qv::Ptr<iFont> Tela::loadFont(const String& name, unsigned short size, unsigned int style)
{
    return loadFont(FontDesc(name, size, style), Qv::Ptr<iRootWindow>());
}

Qv::Ptr<iFont> Tela::getDefaultFont(unsigned int style)
{
    return loadFont(FontDesc(getDefaultFontName(0), getDefaultFontSize(), style), Qv::Ptr<iRootWindow>());
}

void Tela::getAvailableFonts(std::set<WString, WString::ICompare>& out)
{
    OS()->windowing()->enumerateFonts(out);
}

unsigned short Tela::mapFontSize(const String& name)
{
    SizeMapping& mapping = size_mapping();
    if (const auto known = mapping.sizes.find(name); known != mapping.sizes.end())
        return known->second;

    const Qv::Ptr<iRootWindow> window = root_window();
    if (!window) {
        // Nothing can be measured before there is a window; nothing is kept.
        murl_printf("*** Failed to load Font ***\n");
        return getDefaultFontSize();
    }
    const WString sentence(SIZING_SENTENCE);
    if (!mapping.targetMeasured) {
        if (const Qv::Ptr<iFont> reference = getDefaultFont(0)) {
            mapping.targetWidth =
                static_cast<std::uint16_t>(reference->getTextExtent(sentence, iFont::ALL_CHARACTERS).x);
            mapping.targetMeasured = true;
        }
    }

    // Upward from half the default size until the sentence is as wide. A family
    // that cannot be made, or that measures nothing, would never get there: the
    // search stops at the first such size rather than running on through every
    // 16-bit size.
    const WString family = widen(name);
    unsigned size = getDefaultFontSize() / 2;
    for (; size < 0xFFFF; ++size) {
        const Qv::Ptr<iFont> font = window->createFont(family, static_cast<unsigned short>(size), 0, 0);
        if (!font)
            break;
        const int width = font->getTextExtent(sentence, iFont::ALL_CHARACTERS).x;
        if (width >= mapping.targetWidth || width <= 0)
            break;
    }
    const auto mapped = static_cast<unsigned short>(size);
    mapping.sizes.emplace(name, mapped);
    return mapped;
}

void Tela::releaseAllFonts()
{
    font_state().table.clear();
}

void Tela::resetFontScale()
{
    FontState& state = font_state();
    state.fontScale = 1.0;
    state.fontScaleCount = 0;
}

const Qv::Vector<Qv::Ptr<GFONT>>& Tela::fontTable()
{
    return font_state().table;
}

String getDefaultFontName(unsigned int style)
{
    FontState& state = font_state();
    if (state.defaultName.empty())
        state.defaultName = prefs().getPreference(DEFAULT_FONT_PREFERENCE);
    if (state.defaultName.empty()) {
        WString platform_name;
        OS()->windowing()->defaultFontName(platform_name);
        state.defaultName = toUTF8(platform_name);
    }
    String name = state.defaultName;
    if (style & Tela::FontDesc::eBold)
        name += String("-b");
    if (style & Tela::FontDesc::eItalic)
        name += String("-i");
    return name;
}

void setDefaultFontName(String name)
{
    FontState& state = font_state();
    if (name == state.defaultName)
        return;
    state.defaultName = name;
    prefs().setPreference(DEFAULT_FONT_PREFERENCE, name);
    state.table.clear();
    Tela::resetFontScale();
}

unsigned short getDefaultFontSize()
{
    return font_state().defaultSize;
}

void setDefaultFontSize(unsigned short size)
{
    font_state().defaultSize = size;
}

unsigned short getFontYOffset(unsigned short lineHeight, const Qv::Ptr<iFont>& font)
{
    if (!font)
        return 0;
    // Worked in unsigned 32 bits and cut to 16, like the rest of the text
    // layout's line arithmetic: an ascent taller than the line wraps to a large
    // offset rather than a negative one.
    const std::uint32_t room =
        static_cast<std::uint32_t>(lineHeight) - static_cast<std::uint32_t>(font->getMetrics().ascent) + 1u;
    return static_cast<unsigned short>(room >> 1);
}

unsigned short getFontYOffset(unsigned short lineHeight, const Tela::FontDesc& desc)
{
    return getFontYOffset(lineHeight, Tela::loadFont(desc, Qv::Ptr<iRootWindow>()));
}

// The canvas's own fonts are the table's, made through its window.
Qv::Ptr<iFont> Canvas::createFont(const Tela::FontDesc& desc)
{
    return Tela::loadFont(desc, window);
}
