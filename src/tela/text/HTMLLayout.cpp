// HTMLLayout.cpp: the runs of each paragraph flowed along lines by the
// word-wrapping engine, each finished line aligned and drawn, and where each
// run landed recorded for link lookup.
//
// Invariants
// - A handler's `position` is the pen: x the right end of what has been
//   placed on the current line, y the foot of that line. A run starts with
//   the engine indented by x less the left margin, so it goes on along the
//   line the previous run left.
// - A line's alignment is known only when the line is full, so its pieces
//   wait in pendingChunks, built once, and are only shifted when flushed.
// - Lines are ended by width and by the end of a paragraph, never by a
//   newline in the text: the engine reports such a line unwrapped.

#include "tela/text/HTMLRenderer.h"

#include "tela/canvas/Canvas.h"
#include "tela/core/Log.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/text/WordWrappingTextRenderer.h"

#include <algorithm>
#include <utility>

namespace {

using Tela::WordWrappingTextRenderer;

constexpr TextAlignment LEFT_ALIGNED {0, 1};

// A distance as the 16-bit value the layout works in, worked out wide so that
// far-apart edges do not overflow on the way.
unsigned short extent16(int low, int high)
{
    return static_cast<unsigned short>(std::int64_t(high) - low);
}

// x moved by `by`, wrapping as the renderer's own coordinates do rather than
// overflowing: a line of runs each as wide as 16 bits allow still adds up.
int moved(int x, std::int64_t by)
{
    return static_cast<int>(static_cast<std::uint32_t>(std::int64_t(x) + by));
}

} // namespace

class HTMLRenderer::StringHandlerBase : public WordWrappingTextRenderer::iStringHandler {
public:
    StringHandlerBase(int height, const Box& area) : lineHeight(height), box(area) {}
    void handle(const WordWrappingTextRenderer::PSState& line) override = 0;
    virtual void newLine()
    {
        position.x = box.x1;
        position.y -= lineHeight;
        ++lineIndex;
    }

    // How far in from the left margin the pen stands: the next run's indent.
    unsigned short indent() const { return extent16(box.x1, position.x); }
    unsigned short width() const { return extent16(box.x1, box.x2); }

    std::int32_t lineHeight;
    Qv::Ptr<iFont> font;
    eTextStyle textStyle = eTextPlain;
    XY<int> position;
    std::uint16_t lineIndex = 0;
    Box box;
};

class HTMLRenderer::LineCalculator final : public StringHandlerBase {
public:
    LineCalculator() : StringHandlerBase(0, Box{}) {}

    void handle(const WordWrappingTextRenderer::PSState& line) override
    {
        if (line.length != 0)
            position.x = moved(position.x, WordWrappingTextRenderer::lineWidth(line));
        if (line.wrapped)
            newLine();
    }
    void newLine() override
    {
        maxWidth = static_cast<std::uint16_t>(std::max<int>(maxWidth, position.x));
        StringHandlerBase::newLine();
    }

    std::uint16_t maxWidth = 0;
};

class HTMLRenderer::ChunkRenderer final : public StringHandlerBase {
public:
    ChunkRenderer(CanvasRenderer& r, const Box& area, unsigned short height)
        : StringHandlerBase(height, area), renderer(r)
    {
        position = {box.x1, box.y2 - lineHeight};   // the first line lies right under the top edge
        maxLines = static_cast<std::uint16_t>(std::max(1, extent16(box.y1, box.y2) / std::max(1, lineHeight)));
        yOffset = getFontYOffset(static_cast<unsigned short>(lineHeight), Tela::getDefaultFont(0));
    }
    ~ChunkRenderer() override { flush(); }
    ChunkRenderer(const ChunkRenderer&) = delete;
    ChunkRenderer& operator=(const ChunkRenderer&) = delete;

    void handle(const WordWrappingTextRenderer::PSState& line) override
    {
        if (lineIndex < maxLines && line.length != 0 && line.text) {
            Tela::TextDescription piece(line.text->substr(line.start, line.length),
                                        {position.x, position.y + yOffset}, colour, LEFT_ALIGNED,
                                        textStyle, font);
            piece.extents.x2 += line.extraSpacing;
            position.x = moved(position.x, std::int64_t(piece.extents.x2) - piece.extents.x1);
            pendingChunks.emplace_back(currentRun, std::move(piece));
        }
        if (line.wrapped)
            newLine();
    }
    void newLine() override
    {
        flush();
        StringHandlerBase::newLine();
    }

    // Aligns the pending pieces as one, draws them, and records their boxes.
    void flush()
    {
        const int used = extent16(box.x1, position.x);
        int x = box.x1;
        if (alignment.horizontal == 2)
            x += (int(width()) - used) / 2;
        else if (alignment.horizontal == 1)
            x = box.x2 - used;
        for (auto& [run, piece] : pendingChunks) {
            piece.translate(moved(x, -std::int64_t(piece.extents.x1)), 0);
            renderer.render(piece);
            run->boxes.push_back(piece.extents);
            x = moved(x, std::int64_t(piece.extents.x2) - piece.extents.x1);
        }
        pendingChunks.clear();
    }

    Colour colour;
    std::uint16_t maxLines = 1;
    CanvasRenderer& renderer;
    Qv::Vector<std::pair<StyledText*, Tela::TextDescription>> pendingChunks;
    TextAlignment alignment {0, 1};
    std::uint16_t yOffset = 0;
    StyledText* currentRun = nullptr;
};

void HTMLRenderer::render(CanvasRenderer& r, LightweightVector<Paragraph>& paragraphs, const Box& box,
                          unsigned short lineHeight, TextAlignment alignment)
{
    if (paragraphs.empty())
        return;
    if (lineHeight == 0) {
        tela_splat("HTMLRenderer::render: a line height of 0 leaves no room for a line; nothing is drawn");
        return;
    }
    Canvas* const canvas = r.getCanvas();
    ChunkRenderer chunks(r, box, lineHeight);
    for (Paragraph& paragraph : paragraphs) {
        for (StyledText& run : paragraph.runs) {
            chunks.font = canvas ? canvas->createFont(run.font) : Tela::loadFont(run.font, nullptr);
            chunks.textStyle = run.font.textStyle;
            chunks.colour = run.colour;
            chunks.alignment = run.alignment;
            chunks.currentRun = &run;
            run.boxes.clear();
            WordWrappingTextRenderer::processString(chunks, run.text, chunks.width(), chunks.font, chunks.indent(),
                                                    alignment);
        }
        chunks.newLine();
    }
}

HTMLRenderer::Analysis HTMLRenderer::analyse(const LightweightVector<Paragraph>& paragraphs, unsigned short width)
{
    if (paragraphs.empty())
        return {};
    LineCalculator calculator;
    for (const Paragraph& paragraph : paragraphs) {
        for (const StyledText& run : paragraph.runs) {
            calculator.font = Tela::loadFont(run.font, nullptr);
            WordWrappingTextRenderer::processString(calculator, run.text, width, calculator.font, calculator.indent(),
                                                    LEFT_ALIGNED);
        }
        calculator.newLine();
    }
    return {calculator.lineIndex, calculator.maxWidth};
}

unsigned short HTMLRenderer::calcNumDisplayLines(const LightweightVector<Paragraph>& paragraphs, unsigned short width)
{
    return analyse(paragraphs, width).numLines;
}

unsigned short HTMLRenderer::calcMaxWidth(const LightweightVector<Paragraph>& paragraphs)
{
    std::int64_t widest = 0;
    for (const Paragraph& paragraph : paragraphs) {
        std::int64_t sum = 0;
        for (const StyledText& run : paragraph.runs)
            if (const Qv::Ptr<iFont> font = Tela::loadFont(run.font, nullptr))
                sum += font->getTextExtent(run.text, iFont::ALL_CHARACTERS).x;
        widest = std::max(widest, sum);
    }
    return static_cast<unsigned short>(widest);
}

WString HTMLRenderer::getURLAtPosition(const XY<int>& pos, const LightweightVector<Paragraph>& paragraphs)
{
    for (const Paragraph& paragraph : paragraphs)
        for (const StyledText& run : paragraph.runs) {
            if (run.url.empty())
                continue;
            for (const Box& drawn : run.boxes)
                if (drawn.x1 <= pos.x && pos.x <= drawn.x2 && drawn.y1 <= pos.y && pos.y <= drawn.y2)
                    return run.url;
        }
    return WString();
}
