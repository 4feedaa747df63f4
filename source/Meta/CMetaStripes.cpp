#include "Meta/CMetaStripes.h"

#include <array>

#include "Core/Assertions.h"
#include "Meta/CMeta.h"

namespace {
constexpr std::size_t kStripes = 256;   // far more than there are threads
thread_local std::array<const CMeta*, kMetaLevels> t_heldP{};

bool InOrder(const CMeta& meta, std::size_t level) {
    if (t_heldP[level] == &meta) return true;   // once more
    for (std::size_t n = level; n < kMetaLevels; ++n)
        if (t_heldP[n] != nullptr) return false;
    return true;
}
}   // namespace

CMetaStripe& CMetaStripe::Of(MetaLevel level, std::uint32_t serial) noexcept {
    // Never destroyed: a CData may outlive everything.
    static auto* const s_stripesP = new std::array<std::array<CMetaStripe, kStripes>, kMetaLevels>;
    return (*s_stripesP)[static_cast<std::size_t>(level)][serial % kStripes];
}

Ref<CData> CMetaStripe::Find(const CMeta* ownerP, std::uint16_t keyIndex) {
    const std::lock_guard guard(i_handlesLock);
    const auto it = i_handles.find({ownerP, keyIndex});
    if (it == i_handles.end()) return nullptr;
    if (it->second->Hold()) return Ref<CData>::Adopt(it->second);
    i_handles.erase(it);   // its last holder let go a moment ago
    return nullptr;
}

void CMetaStripe::Add(const CMeta* ownerP, std::uint16_t keyIndex, CData* dataP) {
    const std::lock_guard guard(i_handlesLock);
    i_handles.insert_or_assign({ownerP, keyIndex}, dataP);
}

void CMetaStripe::Remove(const CMeta* ownerP, std::uint16_t keyIndex, const CData* dataP) {
    const std::lock_guard guard(i_handlesLock);
    const auto it = i_handles.find({ownerP, keyIndex});
    if (it != i_handles.end() && it->second == dataP) i_handles.erase(it);
}

MetaLock::MetaLock(const CMeta& meta)
    : i_lock(CMetaStripe::Of(meta.Level(), meta.Serial()).Lock()),
      i_level(static_cast<std::size_t>(meta.Level())),
      i_outerP(t_heldP[i_level]) {
    (void)AssertWords(InOrder(meta, i_level),
                      "one meta lock of each level, the row's before the singer's and the song's");
    i_lock.lock();
    t_heldP[i_level] = &meta;
}

MetaLock::~MetaLock() {
    t_heldP[i_level] = i_outerP;
    i_lock.unlock();
}
