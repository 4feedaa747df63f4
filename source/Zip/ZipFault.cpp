#include "Zip/ZipFault.h"

#include <cstddef>
#include <iterator>

namespace {

constexpr struct {
    const char* textZ;
    OSErr status;
} kFaults[] = {
    {"no fault", noErr},
    {"no zip archive", paramErr},
    {"the directory is damaged", ioErr},
    {"the file is cut short", ioErr},
    {"too many members", memFullErr},
    {"one part of a split archive", paramErr},
    {"encrypted, and there is no password", permErr},
    {"packed by a method that is not known", paramErr},
    {"the sizes told cannot be true", ioErr},
    {"it overlaps another member", ioErr},
    {"the header in front of the data is damaged", ioErr},
    {"the packed data are damaged", ioErr},
    {"the checksum is wrong", ioErr},
    {"the file cannot be read", ioErr},
    {"aborted", abortErr},
};
static_assert(std::size(kFaults) == static_cast<std::size_t>(ZipFault::kAborted) + 1);

}   // namespace

const char* TextOf(ZipFault fault) noexcept { return kFaults[static_cast<std::size_t>(fault)].textZ; }
OSErr StatusOf(ZipFault fault) noexcept { return kFaults[static_cast<std::size_t>(fault)].status; }
