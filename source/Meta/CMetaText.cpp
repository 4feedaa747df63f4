#include "Meta/CMetaText.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <functional>
#include <mutex>
#include <new>
#include <vector>

#include "Meta/SmallBlocks.h"

/** The allocation of a text: eight bytes, then the text itself. */
struct CMetaText::Box {
    std::atomic<std::uint32_t> references{1};
    std::uint32_t sizeL : 31, internedB : 1;

    Box(std::size_t size, bool interned) : sizeL(static_cast<std::uint32_t>(size) & 0x7FFFFFFF), internedB(interned) {}
    [[nodiscard]] char* Bytes() noexcept { return reinterpret_cast<char*>(this + 1); }
    [[nodiscard]] std::string_view View() const noexcept { return {reinterpret_cast<const char*>(this + 1), sizeL}; }

    static Box* Make(std::string_view text, bool interned) {
        Box* boxP = new (SmallBlocks::Take(sizeof(Box) + text.size())) Box(text.size(), interned);
        std::memcpy(boxP->Bytes(), text.data(), text.size());
        return boxP;
    }
    static void Free(Box* boxP) noexcept {
        const std::size_t bytesL = sizeof(Box) + boxP->sizeL;
        boxP->~Box();
        SmallBlocks::Give(boxP, bytesL);
    }
    /** Unless the last reference has gone: such a box is on its way out. */
    [[nodiscard]] bool TryRetain() noexcept {
        std::uint32_t countL = references.load(std::memory_order_relaxed);
        while (countL > 0)
            if (references.compare_exchange_weak(countL, countL + 1, std::memory_order_acquire)) return true;
        return false;
    }
};

namespace {

using Box = CMetaText::Box;

std::size_t HashOf(std::string_view text) noexcept { return std::hash<std::string_view>()(text); }

/** The shared texts of one shard: open addressing with the hash beside the pointer, so that a look-up touches the text
    it finds and no other. (A node-based set made the filling of a
    library take nearly twice as long.) */
class TextTable {
public:
    [[nodiscard]] std::size_t Count() const noexcept { return i_countL; }
    [[nodiscard]] Box* Find(std::string_view text, std::uint32_t hash) const noexcept {
        if (i_entries.empty()) return nullptr;
        for (std::size_t at = hash & Mask();; at = (at + 1) & Mask()) {
            const Entry& entry = i_entries[at];
            if (entry.boxP == nullptr) return nullptr;
            if (entry.hash == hash && entry.boxP->View() == text) return entry.boxP;
        }
    }
    void Insert(Box* boxP, std::uint32_t hash) {
        if ((i_countL + 1) * 4 > i_entries.size() * 3) Grow();
        std::size_t at = hash & Mask();
        while (i_entries[at].boxP != nullptr) at = (at + 1) & Mask();
        i_entries[at] = {boxP, hash};
        ++i_countL;
    }
    /** Does nothing when it is not in the table. */
    void Erase(const Box* boxP, std::uint32_t hash) noexcept {
        if (i_entries.empty()) return;
        std::size_t hole = hash & Mask();
        for (; i_entries[hole].boxP != boxP; hole = (hole + 1) & Mask())
            if (i_entries[hole].boxP == nullptr) return;
        // What stands behind moves up, unless that would be in front of its first place.
        for (std::size_t at = (hole + 1) & Mask(); i_entries[at].boxP != nullptr; at = (at + 1) & Mask()) {
            const std::size_t fromFirst = (at - i_entries[at].hash) & Mask(), fromHole = (at - hole) & Mask();
            if (fromFirst < fromHole) continue;
            i_entries[hole] = i_entries[at];
            hole = at;
        }
        i_entries[hole] = {};
        --i_countL;
    }

private:
    struct Entry {
        Box* boxP = nullptr;
        std::uint32_t hash = 0;
    };
    [[nodiscard]] std::size_t Mask() const noexcept { return i_entries.size() - 1; }
    void Grow() {
        constexpr std::size_t kLeast = 16;
        std::vector<Entry> before(std::max(kLeast, i_entries.size() * 2));
        std::swap(before, i_entries);
        i_countL = 0;
        for (const Entry& entry : before)
            if (entry.boxP != nullptr) Insert(entry.boxP, entry.hash);
    }
    std::vector<Entry> i_entries;   // a power of two, a quarter of it free
    std::size_t i_countL = 0;
};

/** One part of the table of shared texts. Nothing else is locked under its lock. */
struct Shard {
    std::mutex lock;
    TextTable texts;
};
constexpr std::size_t kShards = 64;

std::array<Shard, kShards>& Shards() {
    static auto* const s_shardsP = new std::array<Shard, kShards>;   // never destroyed: texts in statics may outlive it
    return *s_shardsP;
}
Shard& ShardOf(std::size_t hash) { return Shards()[hash >> 40 & (kShards - 1)]; }

std::string_view Cut(std::string_view text) noexcept {
    if (text.size() <= CMetaText::kMost) return text;
    std::size_t sizeL = CMetaText::kMost;
    while (sizeL > 0 && (static_cast<unsigned char>(text[sizeL]) & 0xC0) == 0x80) --sizeL;
    return text.substr(0, sizeL);
}

}   // namespace

CMetaText CMetaText::Of(std::string_view text) {
    return text.empty() ? CMetaText() : CMetaText(Box::Make(Cut(text), false));
}

CMetaText CMetaText::Interned(std::string_view text) {
    if (text.empty()) return {};
    text = Cut(text);
    const std::size_t hash = HashOf(text);
    const auto shortHash = static_cast<std::uint32_t>(hash);
    Shard& shard = ShardOf(hash);
    const std::lock_guard guard(shard.lock);
    if (Box* boxP = shard.texts.Find(text, shortHash)) {
        if (boxP->TryRetain()) return CMetaText(boxP);
        shard.texts.Erase(boxP, shortHash);   // its last owner is about to look here, and will not find it
    }
    Box* boxP = Box::Make(text, true);
    shard.texts.Insert(boxP, shortHash);
    return CMetaText(boxP);
}

std::string_view CMetaText::View() const noexcept { return i_boxP == nullptr ? std::string_view() : i_boxP->View(); }

void CMetaText::Retain() const noexcept {
    if (i_boxP != nullptr) i_boxP->references.fetch_add(1, std::memory_order_relaxed);
}

void CMetaText::Release() noexcept {
    if (i_boxP == nullptr || i_boxP->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    if (i_boxP->internedB != 0) {
        const std::size_t hash = HashOf(i_boxP->View());
        Shard& shard = ShardOf(hash);
        const std::lock_guard guard(shard.lock);
        shard.texts.Erase(i_boxP, static_cast<std::uint32_t>(hash));
    }
    Box::Free(i_boxP);
}

std::uint64_t CMetaText::Detach() noexcept { return reinterpret_cast<std::uintptr_t>(std::exchange(i_boxP, nullptr)); }
CMetaText CMetaText::Adopt(std::uint64_t bits) noexcept { return CMetaText(reinterpret_cast<Box*>(bits)); }

std::size_t CMetaText::InternedCount() {
    std::size_t countL = 0;
    for (Shard& shard : Shards()) {   // one lock at a time: a figure, not a moment in time
        const std::lock_guard guard(shard.lock);
        countL += shard.texts.Count();
    }
    return countL;
}
