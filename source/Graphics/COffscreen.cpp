#include "Graphics/COffscreen.h"

#include <cstring>
#include <new>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Core/ForeignRoom.h"

namespace {
constexpr std::align_val_t kAlign{kForeign_Align};
}

void COffscreen::Free_::operator()(std::uint8_t* bytesP) const noexcept { ::operator delete(bytesP, kAlign); }

OSErr COffscreen::Create(const Rect& bounds, short depth, const CPixels* colorsP) {
    const std::size_t plainL = BytesOfRow(1, depth);
    if (!AssertWords(plainL != 0, "depth is 4, 8, 32 or 128")) return paramErr;
    if (bounds.Empty()) return LogStep(paramErr, "Can't allocate Pixel Buffer");
    const auto widthL = static_cast<std::size_t>(bounds.Width());
    const auto heightL = static_cast<std::size_t>(bounds.Height());
    if (heightL > kMaxPixels / widthL) return LogStep(memFullErr, "Can't allocate Pixel Buffer");

    const std::size_t rowL = ForeignRow(BytesOfRow(bounds.Width(), depth));
    // Below 64 M pixels of 16 bytes and their padding: cannot wrap.
    const std::size_t bytesL = rowL * heightL + kForeign_Padding;
    std::unique_ptr<std::uint8_t, Free_> memory(
        static_cast<std::uint8_t*>(::operator new(bytesL, kAlign, std::nothrow)));
    if (memory == nullptr) return LogStep(memFullErr, "Can't allocate Pixel Buffer");
    std::memset(memory.get(), 0, bytesL);

    const ColorTable colors = colorsP != nullptr ? colorsP->Colors() : ColorTable{};
    if (const OSErr err = SetMemory(memory.get(), bounds, depth, rowL); Failed(err)) return err;
    i_memory = std::move(memory);
    SetColors(colors);
    ClearTransparent();
    return noErr;
}

std::unique_ptr<COffscreen> COffscreen::Make(const Rect& bounds, short depth, OSErr& err) {
    auto made = std::make_unique<COffscreen>();
    err = made->Create(bounds, depth);
    return Failed(err) ? nullptr : std::move(made);
}
