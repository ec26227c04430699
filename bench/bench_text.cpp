// Word wrapping of 1 MB of text at 400 pixels with DejaVu Sans at a 16-pixel em:
// the library's wrapping through its own font, the way an application measures
// a text (processString over each paragraph with the font the font table
// gives), against Pango laying out the same paragraphs in one reused layout,
// and against HarfBuzz shaping them alone with the same face (the floor: no
// wrapping can be cheaper than measuring the text once).
//
// The text is made up, the same on every run: paragraphs of English-like words
// of varied length, with punctuation, hyphenated compounds and a few long words.
// It is far more than the font's cache of shaped runs holds, so every pass
// shapes every paragraph again, as the other two do.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/events/EventQueue.h"
#include "tela/state/TelaState.h"
#include "tela/text/Fonts.h"
#include "tela/text/WordWrappingTextRenderer.h"

#include "headless/FreeTypeFont.h"

#include "FontScene.h"

#include <benchmark/benchmark.h>
#include <fontconfig/fontconfig.h>
#include <hb-ot.h>
#include <hb.h>
#include <pango/pangocairo.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr unsigned short WIDTH = 400;
constexpr unsigned EM_PIXELS = 16;
constexpr std::size_t TEXT_BYTES = 1u << 20;

// Paragraphs, ASCII only so that UTF-8 and UTF-16 count the same characters.
std::vector<std::string> makeParagraphs()
{
    static const char* const ONSETS[] = {"b", "c", "d", "f", "g", "h", "l", "m", "n", "p", "r", "s", "t", "w",
                                         "th", "st", "pr", "ch", "sh", "tr", "br", "", "", ""};
    static const char* const VOWELS[] = {"a", "e", "i", "o", "u", "ea", "ou", "io", "y", "ai"};
    static const char* const CODAS[] = {"", "", "", "n", "r", "s", "t", "nd", "ng", "ll", "ck", "st", "rt", "m"};
    std::minstd_rand random(20240611u);   // fully specified, so the same text everywhere
    const auto pick = [&random](unsigned count) { return static_cast<unsigned>(random() % count); };
    const auto word = [&] {
        // Mostly one to three syllables; now and then a long word, wider than some lines.
        unsigned syllables = 1 + pick(3);
        if (pick(100) == 0)
            syllables = 8 + pick(8);
        std::string text;
        for (unsigned s = 0; s < syllables; ++s) {
            text += ONSETS[pick(std::size(ONSETS))];
            text += VOWELS[pick(std::size(VOWELS))];
            text += CODAS[pick(std::size(CODAS))];
        }
        return text;
    };

    std::vector<std::string> paragraphs;
    std::size_t total = 0;
    while (total < TEXT_BYTES) {
        std::string paragraph;
        const unsigned words = 20 + pick(180);
        bool sentenceStart = true;
        for (unsigned w = 0; w < words; ++w) {
            std::string next = word();
            if (pick(12) == 0)
                next += "-" + word();   // a hyphenated compound
            if (sentenceStart)
                next[0] = static_cast<char>(next[0] - 'a' + 'A');
            sentenceStart = false;
            const unsigned mark = pick(40);
            if (mark < 3) {
                next += '.';
                sentenceStart = true;
            } else if (mark < 6) {
                next += ',';
            } else if (mark == 6) {
                next += pick(2) ? ';' : ':';
            } else if (mark == 7) {
                next += pick(2) ? '?' : '!';
                sentenceStart = true;
            }
            if (!paragraph.empty())
                paragraph += ' ';
            paragraph += next;
        }
        paragraph += '.';
        total += paragraph.size() + 1;   // and the newline between paragraphs
        paragraphs.push_back(std::move(paragraph));
    }
    return paragraphs;
}

const std::vector<std::string>& paragraphs()
{
    static const std::vector<std::string> text = makeParagraphs();
    return text;
}

std::int64_t textBytes()
{
    std::int64_t bytes = 0;
    for (const std::string& paragraph : paragraphs())
        bytes += static_cast<std::int64_t>(paragraph.size()) + 1;
    return bytes;
}

std::vector<WString> wideParagraphs()
{
    std::vector<WString> wide;
    for (const std::string& paragraph : paragraphs())
        wide.emplace_back(std::u16string(paragraph.begin(), paragraph.end()));
    return wide;
}

// The face file Fontconfig gives for the family, for HarfBuzz to read on its own.
std::string faceFile(const char* family)
{
    FcPattern* const pattern = FcNameParse(reinterpret_cast<const FcChar8*>(family));
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result = FcResultNoMatch;
    FcPattern* const match = FcFontMatch(nullptr, pattern, &result);
    std::string path;
    FcChar8* file = nullptr;
    if (match && FcPatternGetString(match, FC_FILE, 0, &file) == FcResultMatch)
        path = reinterpret_cast<const char*>(file);
    if (match)
        FcPatternDestroy(match);
    FcPatternDestroy(pattern);
    return path;
}

void BM_WrapTela(benchmark::State& state)
{
    const FontScene scene;
    const std::vector<WString> text = wideParagraphs();
    const Qv::Ptr<iFont> font = Tela::loadFont("DejaVu Sans", EM_PIXELS, 0);
    const auto* real = dynamic_cast<const Headless::FreeTypeFont*>(font.get());
    if (!real || real->pixels() != EM_PIXELS) {
        state.SkipWithError("the font table gave no 16-pixel FreeType font");
        return;
    }
    const std::uint64_t shapedBefore = real->shapeCount();
    std::int64_t lines = 0;
    for (auto _ : state) {
        lines = 0;
        for (const WString& paragraph : text) {
            Tela::LineAnalyser analyser;
            Tela::WordWrappingTextRenderer::processString(analyser, paragraph, WIDTH, font, 0, {0, 1});
            lines += analyser.lineCount;
        }
        benchmark::DoNotOptimize(lines);
    }
    state.counters["lines"] = static_cast<double>(lines);
    // Paragraphs shaped a pass: all of them when the cache of shaped runs cannot help.
    state.counters["shaped"] = static_cast<double>(real->shapeCount() - shapedBefore)
                               / static_cast<double>(state.iterations());
    state.counters["paragraphs"] = static_cast<double>(text.size());
    state.SetBytesProcessed(state.iterations() * textBytes());
}

void BM_WrapPango(benchmark::State& state)
{
    PangoFontMap* const fontMap = pango_cairo_font_map_new();
    PangoContext* const context = pango_font_map_create_context(fontMap);
    PangoLayout* const layout = pango_layout_new(context);
    PangoFontDescription* const description = pango_font_description_from_string("DejaVu Sans");
    pango_font_description_set_absolute_size(description, EM_PIXELS * PANGO_SCALE);
    pango_layout_set_font_description(layout, description);
    pango_layout_set_width(layout, WIDTH * PANGO_SCALE);
    pango_layout_set_wrap(layout, PANGO_WRAP_WORD);
    std::int64_t lines = 0;
    for (auto _ : state) {
        lines = 0;
        for (const std::string& paragraph : paragraphs()) {
            pango_layout_set_text(layout, paragraph.data(), static_cast<int>(paragraph.size()));
            lines += pango_layout_get_line_count(layout);
        }
        benchmark::DoNotOptimize(lines);
    }
    state.counters["lines"] = static_cast<double>(lines);
    state.SetBytesProcessed(state.iterations() * textBytes());
    pango_font_description_free(description);
    g_object_unref(layout);
    g_object_unref(context);
    g_object_unref(fontMap);
}

void BM_ShapeHarfBuzz(benchmark::State& state)
{
    const std::string path = faceFile("DejaVu Sans");
    hb_blob_t* const blob = hb_blob_create_from_file(path.c_str());
    hb_face_t* const face = hb_face_create(blob, 0);
    hb_font_t* const font = hb_font_create(face);
    hb_ot_font_set_funcs(font);
    hb_font_set_scale(font, EM_PIXELS * 64, EM_PIXELS * 64);
    if (hb_face_get_glyph_count(face) == 0) {
        state.SkipWithError("no DejaVu Sans face");
        return;
    }
    const std::vector<WString> text = wideParagraphs();
    hb_buffer_t* const buffer = hb_buffer_create();
    for (auto _ : state) {
        std::int64_t glyphs = 0;
        for (const WString& paragraph : text) {
            hb_buffer_clear_contents(buffer);
            const std::u16string_view units = paragraph.view();
            hb_buffer_add_utf16(buffer, reinterpret_cast<const std::uint16_t*>(units.data()),
                                static_cast<int>(units.size()), 0, static_cast<int>(units.size()));
            hb_buffer_set_cluster_level(buffer, HB_BUFFER_CLUSTER_LEVEL_MONOTONE_GRAPHEMES);
            hb_buffer_guess_segment_properties(buffer);
            hb_shape(font, buffer, nullptr, 0);
            glyphs += hb_buffer_get_length(buffer);
        }
        benchmark::DoNotOptimize(glyphs);
    }
    state.SetBytesProcessed(state.iterations() * textBytes());
    hb_buffer_destroy(buffer);
    hb_font_destroy(font);
    hb_face_destroy(face);
    hb_blob_destroy(blob);
}

} // namespace

BENCHMARK(BM_WrapTela)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WrapPango)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ShapeHarfBuzz)->Unit(benchmark::kMillisecond);
