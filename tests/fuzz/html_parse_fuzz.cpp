// Markup of any bytes through the tag scanner and the parser: neither may
// crash, read outside the input or hang, and the scanner's tags must come in
// order, inside the input, without overlapping. Layout is left out: it needs
// a root window to load fonts through, and the text tests lay out a 10 MB
// and a 100,000-deep input instead.

#include "tela/colour/Palette.h"
#include "tela/core/XMLParser.h"
#include "tela/text/HTMLRenderer.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const char* const text = reinterpret_cast<const char*>(data);
    const XMLParser parser(text, size);
    std::size_t behind_last = 0;
    for (const XMLParser::Tag& tag : parser.tags()) {
        if (tag.first < behind_last || tag.last < tag.first || tag.last >= size || text[tag.first] != '<' ||
            text[tag.last] != '>')
            std::abort();
        for (const XMLParser::Attribute& attribute : parser.attributes(tag))
            if (attribute.name.data() < text + tag.first || attribute.name.data() + attribute.name.size() > text + tag.last)
                std::abort();
        behind_last = std::size_t(tag.last) + 1;
    }

    // The parser only looks past the prefix test when the bytes begin "<p" or
    // "<html>"; put it in front so that every input reaches the tags.
    String markup("<p>");
    markup.append(text, size);
    const LightweightVector<HTMLRenderer::Paragraph> paragraphs = HTMLRenderer::parse(markup, Palette::getDefault());
    for (const HTMLRenderer::Paragraph& paragraph : paragraphs)
        for (const HTMLRenderer::StyledText& run : paragraph.runs)
            if (!run.boxes.empty())
                std::abort();   // nothing is drawn yet
    HTMLRenderer::parse(String(text, size), Palette::getDefault());
    return 0;
}
