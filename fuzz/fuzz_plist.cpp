#include <cstdint>
#include <cstdlib>
#include <string>

#include "Values/PropertyList.h"

// What parses, writes, and parses again to the same value; the second writing is the first, byte for byte.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    CCFValue first(false);
    if (Failed(ReadPropertyList(std::as_bytes(std::span(dataP, sizeL)), first))) return 0;
    std::string text;
    if (Failed(WritePropertyList(first, text))) __builtin_trap();
    CCFValue second(false);
    if (Failed(ReadPropertyList(std::as_bytes(std::span(text)), second)) || !(first == second)) __builtin_trap();
    std::string again;
    if (Failed(WritePropertyList(second, again)) || again != text) __builtin_trap();
    return 0;
}
