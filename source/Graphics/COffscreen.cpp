#include "Graphics/COffscreen.h"

#include <new>

#include "Core/Assertions.h"
#include "Core/CLog.h"

std::unique_ptr<COffscreen> COffscreen::Create(const Rect& bounds, short depthS, const CPixels* colorsOfP) {
    const bool depthB = depthS == 4 || depthS == 8 || depthS == 32 || depthS == 128;
    if (!AssertWords(depthB, "depth() == 4 || depth() == 8 || depth() == 32 || depth() == 128")) return nullptr;
    std::unique_ptr<COffscreen> made;
    if (!bounds.IsEmpty()) {
        // At most 65,535 pixels a side: neither product can wrap.
        const std::size_t rowBytes = (static_cast<std::size_t>(bounds.Width()) * static_cast<std::size_t>(depthS) + 7) / 8;
        const std::size_t alignedBytes = depthS == 4 ? rowBytes : (rowBytes + 15) / 16 * 16;
        const std::size_t allBytes = alignedBytes * static_cast<std::size_t>(bounds.Height());
        std::unique_ptr<std::byte[]> memory(new (std::nothrow) std::byte[allBytes]());
        if (memory != nullptr) {
            made.reset(new COffscreen);
            made->i_memory = std::move(memory);
            made->Describe(bounds, alignedBytes, depthS, made->i_memory.get());
            if (colorsOfP != nullptr) made->SetColors(colorsOfP->Colors());
        }
    }
    if (made == nullptr) Log("### Error Can't allocate Pixel Buffer");
    return made;
}
