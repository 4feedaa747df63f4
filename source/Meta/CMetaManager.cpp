#include "Meta/CMetaManager.h"

#include <algorithm>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Meta/CMetaSlots.h"

CMetaManager* s_MetaManagerP = nullptr;

namespace {
/** Where a key's place in the hash table is looked for first. */
std::size_t HashPlace(MetaKey key) noexcept {
    constexpr std::uint32_t kSpread = 0x9E3779B1;   // 2^32 by the golden ratio; the upper bits are the mixed ones
    constexpr int kHashBits = 13;
    return static_cast<std::uint32_t>(key) * kSpread >> (32 - kHashBits);
}
}   // namespace

CMetaManager& MetaManager() {
    if (Assert(s_MetaManagerP)) return *s_MetaManagerP;
    // The show goes on: whoever came too early, or too late, finds the table at least.
    static CMetaManager* const s_spareP = [] {
        auto* spareP = new CMetaManager;   // kept to the end of the process
        s_MetaManagerP = nullptr;
        return spareP;
    }();
    return *s_spareP;
}

CMetaManager::CMetaManager(MetaSetup setup)
    : i_setup(setup.traits),
      i_software(std::move(setup.software)),
      i_moveArticlesB(setup.moveArticlesB),
      i_hash(std::make_unique<std::atomic<std::uint64_t>[]>(kHashSize)),
      i_traits(std::make_unique<std::atomic<CDataTraits*>[]>(CMetaSlots::kMostKeys)) {
    for (const auto keys : {SubclassKeys(), PlainKeys()})
        for (const MetaKey key : keys) {
            const MetaKeyRow* rowP = FindMetaKeyRow(key);
            if (!Assert(rowP)) continue;
            Add(*rowP);
            i_keys.push_back(key);
        }
    i_sortedKeys = i_keys;
    std::ranges::sort(i_sortedKeys);
    (void)GetTraits(CM_Key_NONE);   // stands in when there are too many
    (void)Assert(s_MetaManagerP == nullptr);
    s_MetaManagerP = this;
}

CMetaManager::~CMetaManager() {
    (void)Assert(i_livingL == 0);
    if (s_MetaManagerP == this) s_MetaManagerP = nullptr;
    for (std::uint32_t n = 0; n < i_traitsL; ++n) delete i_traits[n].load();
}

int CMetaManager::Find(MetaKey key) const noexcept {
    const auto code = static_cast<std::uint32_t>(key);
    static_assert(kHashSize == std::size_t{1} << 13);
    for (std::size_t at = HashPlace(key);; at = (at + 1) % kHashSize) {
        const std::uint64_t entry = i_hash[at].load(std::memory_order_acquire);
        if (entry == 0) return -1;
        if (entry >> 16 == code) return static_cast<int>(entry & 0xFFFF) - 1;
    }
}

CDataTraits& CMetaManager::TraitsAt(std::uint16_t index) const {
    return *i_traits[index].load(std::memory_order_acquire);
}

CDataTraits& CMetaManager::GetTraits(MetaKey key) {
    if (const int index = Find(key); index >= 0) return TraitsAt(static_cast<std::uint16_t>(index));
    const std::lock_guard guard(i_lock);
    if (const int index = Find(key); index >= 0) return TraitsAt(static_cast<std::uint16_t>(index));
    if (i_traitsL == CMetaSlots::kMostKeys) return TraitsAt(static_cast<std::uint16_t>(Find(CM_Key_NONE)));
    if (const MetaKeyRow* rowP = FindMetaKeyRow(key)) return Add(*rowP);   // an account key
    (void)SongFileOfKey(key);                                              // logs one that looks like a file place
    const std::string title = "* " + MetaKeyText(key);
    return Add({key, TraitsClass::kPlain, title.c_str(), ValType::ValType_NONE, kProperty_Text,
                kKeyFlag_NotIndexed | kKeyFlag_Hidden, 50, 200, 0});
}

CDataTraits& CMetaManager::Add(const MetaKeyRow& row) {
    const std::uint32_t index = i_traitsL.load(std::memory_order_relaxed);
    CDataTraits* traitsP = MakeTraits(row, static_cast<std::uint16_t>(index), i_setup).release();
    i_traits[index].store(traitsP, std::memory_order_release);
    i_traitsL.store(index + 1, std::memory_order_relaxed);
    if (index + 1 == CMetaSlots::kMostKeys) Log("### Error: too many meta keys, further ones are not kept");

    const auto code = static_cast<std::uint32_t>(row.key);
    std::size_t at = HashPlace(row.key);
    while (i_hash[at].load(std::memory_order_relaxed) != 0) at = (at + 1) % kHashSize;
    i_hash[at].store(static_cast<std::uint64_t>(code) << 16 | (index + 1), std::memory_order_release);
    return *traitsP;
}

MetaKey CMetaManager::FindKeyByTitle(const SuperString& title) const {
    for (const MetaKey key : i_keys) {
        const CDataTraits& traits = TraitsAt(static_cast<std::uint16_t>(Find(key)));
        if (traits.Has(kKeyFlag_Column) && traits.Title() == title) return key;
    }
    return CM_Key_NONE;
}

std::uint32_t CMetaManager::Register(CMeta& meta) {
    const std::lock_guard guard(i_registerLock);
    const std::uint32_t serial = i_nextSerial++;
    auto& block = i_blocks[serial / kBlockSize];
    if (block == nullptr) block = std::make_unique<Block>();
    block->metas[serial % kBlockSize] = &meta;
    ++block->livingL;
    ++i_livingL;
    return serial;
}

void CMetaManager::Unregister(std::uint32_t serial) noexcept {
    const std::lock_guard guard(i_registerLock);
    const auto it = i_blocks.find(serial / kBlockSize);
    if (!Assert(it != i_blocks.end())) return;
    it->second->metas[serial % kBlockSize] = nullptr;
    --i_livingL;
    if (--it->second->livingL == 0) i_blocks.erase(it);
}

CMeta* CMetaManager::FindMeta(std::uint32_t serial) const {
    const std::lock_guard guard(i_registerLock);
    const auto it = i_blocks.find(serial / kBlockSize);
    return it == i_blocks.end() ? nullptr : it->second->metas[serial % kBlockSize];
}

std::size_t CMetaManager::MetaCount() const {
    const std::lock_guard guard(i_registerLock);
    return i_livingL;
}
