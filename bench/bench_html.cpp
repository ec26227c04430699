// A megabyte of the markup subset parsed and laid out at 400 pixels in DejaVu
// Sans, against plain word wrapping of the same words without the markup (one
// pass of the engine with a line counter). The ratio is what the markup costs:
// scanning the tags, building the runs, and one engine call a run instead of
// one for the whole text. Parsing alone is measured too.

#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/colour/Palette.h"
#include "tela/events/EventQueue.h"
#include "tela/state/TelaState.h"
#include "tela/text/Fonts.h"
#include "tela/text/HTMLRenderer.h"
#include "tela/text/WordWrappingTextRenderer.h"

#include "FontScene.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

constexpr std::size_t TEXT_BYTES = 1 << 20;
constexpr unsigned short WIDTH = 400;

// The same words twice: as markup, a paragraph of styled runs at a time, and
// as plain text with a newline for each paragraph.
struct Texts {
    String markup;
    WString plain;
};

const Texts& texts()
{
    static const Texts built = [] {
        const char* const paragraph[][2] = {
            {"<p>", ""},
            {"Help text runs on for a while, with ", "Help text runs on for a while, with "},
            {"<b>bold words</b>", "bold words"},
            {" and ", " and "},
            {"<i>italic ones</i>", "italic ones"},
            {", a <font color=\"warning\">warning in colour</font>", ", a warning in colour"},
            {" and <a href=\"www.example.org\">a link to follow</a> before it ends.", " and a link to follow before it ends."},
            {"</p>", "\n"},
        };
        std::string markup;
        std::u16string plain;
        // Each paragraph numbered, so that the platform's cache of shaped
        // runs cannot serve a whole paragraph again: only the short styled
        // phrases repeat, as they would in real help text.
        for (int number = 0; markup.size() < TEXT_BYTES; ++number)
            for (const auto& piece : paragraph) {
                const std::string numbered = piece[0] == std::string("<p>") ? "" : std::to_string(number);
                const bool first = &piece == &paragraph[1];
                markup += piece[0];
                if (first)
                    markup += numbered;
                for (const char* c = piece[1]; *c; ++c)
                    plain += static_cast<char16_t>(*c);
                if (first)
                    for (const char c : numbered)
                        plain += static_cast<char16_t>(c);
            }
        return Texts{String(markup.data(), markup.size()), WString(plain.data(), plain.size())};
    }();
    return built;
}

void BM_HTMLParse(benchmark::State& state)
{
    FontScene scene;
    const Texts& text = texts();
    for (auto _ : state)
        benchmark::DoNotOptimize(HTMLRenderer::parse(text.markup, Palette::getDefault()));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(text.markup.size()));
}
BENCHMARK(BM_HTMLParse)->Unit(benchmark::kMillisecond);

void BM_HTMLParseAndLayout(benchmark::State& state)
{
    FontScene scene;
    const Texts& text = texts();
    for (auto _ : state) {
        const LightweightVector<HTMLRenderer::Paragraph> paragraphs = HTMLRenderer::parse(text.markup, Palette::getDefault());
        benchmark::DoNotOptimize(HTMLRenderer::analyse(paragraphs, WIDTH));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(text.markup.size()));
}
BENCHMARK(BM_HTMLParseAndLayout)->Unit(benchmark::kMillisecond);

void BM_PlainWordWrap(benchmark::State& state)
{
    FontScene scene;
    const Texts& text = texts();
    const Qv::Ptr<iFont> font = Tela::getDefaultFont(0);
    for (auto _ : state) {
        Tela::LineAnalyser lines;
        Tela::WordWrappingTextRenderer::processString(lines, text.plain, WIDTH, font, 0, TextAlignment{0, 1});
        benchmark::DoNotOptimize(lines.lineCount);
    }
    // Its own bytes: the same words take about two thirds of the markup's.
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(text.plain.size()));
}
BENCHMARK(BM_PlainWordWrap)->Unit(benchmark::kMillisecond);

} // namespace
