// Fuzzes the PNG decoder from memory (see DecoderFuzz.h).

#include "DecoderFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return fuzz_decoder(Headless::decodePngImage, data, size);
}
