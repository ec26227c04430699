// Plain text of any bytes, read as UTF-8, made into markup with each
// combination of flags, then parsed back: no crash, no hang, and text that
// does not already begin with "<p>" comes back as markup the parser accepts.

#include "tela/colour/Palette.h"
#include "tela/text/HTMLRenderer.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const WString text = fromUTF8(String(reinterpret_cast<const char*>(data), size));
    for (unsigned flags = 0; flags < 4; ++flags) {
        const String markup = HTMLRenderer::convertToHTML(text, flags);
        if (!text.view().starts_with(u"<p>") && !HTMLRenderer::isHTML(markup))
            std::abort();
        HTMLRenderer::parse(markup, Palette::getDefault());
    }
    return 0;
}
