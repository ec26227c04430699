// Packed colours from arbitrary bytes: every record either reads back as a
// colour of a known space or as the invalid colour, and the stream never
// reads past its end.

#include "tela/colour/UifColour.h"
#include "tela/core/Log.h"
#include "tela/core/PStream.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void quiet(const char*, void*) {}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Qv::LogSinkRecord previous = Qv::setLogSink({&quiet, nullptr});
    (void)previous;
    StreamFile file;
    file.setBytes(std::string(reinterpret_cast<const char*>(data), size));
    PStream stream(file);
    // A few records in a row, as a file of them holds.
    for (int record = 0; record < 4 && !file.atEnd(); ++record) {
        UifColour colour;
        stream >> colour;
        const ColourSpace space = colour.colourSpace();
        if (space < COLOUR_SPACE_RGB || space > COLOUR_SPACE_HSV)
            std::abort();
        if (file.readPosition() > size)
            std::abort();
        (void)colour.to16Bit();
        (void)static_cast<unsigned int>(colour);
        (void)colour.get32BitYUV();
        (void)colour.asString();
        StreamFile again;
        PStream writer(again);
        writer << colour;
    }
    return 0;
}
