#include "Library/CMetaText.h"

#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_set>

/** The allocation of a text: eight bytes, then the text itself. */
struct CMetaText::Box {
    std::atomic<std::uint32_t> references{1};
    std::uint32_t sizeL : 31, internedB : 1;

    Box(std::size_t size, bool interned) : sizeL(static_cast<std::uint32_t>(size) & 0x7FFFFFFF), internedB(interned) {}
    [[nodiscard]] char* Bytes() noexcept { return reinterpret_cast<char*>(this + 1); }
    [[nodiscard]] std::string_view View() const noexcept { return {reinterpret_cast<const char*>(this + 1), sizeL}; }

    static Box* Make(std::string_view text, bool interned) {
        Box* boxP = new (::operator new(sizeof(Box) + text.size())) Box(text.size(), interned);
        std::memcpy(boxP->Bytes(), text.data(), text.size());
        return boxP;
    }
    static void Free(Box* boxP) noexcept {
        boxP->~Box();
        ::operator delete(boxP);
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

struct BoxHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
    std::size_t operator()(const Box* boxP) const noexcept { return (*this)(boxP->View()); }
};
struct BoxEqual {
    using is_transparent = void;
    static std::string_view View(std::string_view text) noexcept { return text; }
    static std::string_view View(const Box* boxP) noexcept { return boxP->View(); }
    bool operator()(const auto& a, const auto& b) const noexcept { return View(a) == View(b); }
};

/** One part of the table of shared texts. Nothing else is locked under its lock. */
struct Shard {
    std::mutex lock;
    std::unordered_set<Box*, BoxHash, BoxEqual> boxes;
};
constexpr std::size_t kShards = 64;

std::array<Shard, kShards>& Shards() {
    static auto* const s_shardsP = new std::array<Shard, kShards>;   // never destroyed: texts in statics may outlive it
    return *s_shardsP;
}
Shard& ShardOf(std::string_view text) { return Shards()[BoxHash()(text) >> 40 & (kShards - 1)]; }

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
    Shard& shard = ShardOf(text);
    const std::lock_guard guard(shard.lock);
    if (const auto it = shard.boxes.find(text); it != shard.boxes.end()) {
        if ((*it)->TryRetain()) return CMetaText(*it);
        shard.boxes.erase(it);   // its last owner is about to look here, and will find another box or none
    }
    Box* boxP = Box::Make(text, true);
    shard.boxes.insert(boxP);
    return CMetaText(boxP);
}

std::string_view CMetaText::View() const noexcept { return i_boxP == nullptr ? std::string_view() : i_boxP->View(); }

void CMetaText::Retain() const noexcept {
    if (i_boxP != nullptr) i_boxP->references.fetch_add(1, std::memory_order_relaxed);
}

void CMetaText::Release() noexcept {
    if (i_boxP == nullptr || i_boxP->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    if (i_boxP->internedB != 0) {
        Shard& shard = ShardOf(i_boxP->View());
        const std::lock_guard guard(shard.lock);
        const auto it = shard.boxes.find(i_boxP->View());
        if (it != shard.boxes.end() && *it == i_boxP) shard.boxes.erase(it);
    }
    Box::Free(i_boxP);
}

std::uint64_t CMetaText::Detach() noexcept { return reinterpret_cast<std::uintptr_t>(std::exchange(i_boxP, nullptr)); }
CMetaText CMetaText::Adopt(std::uint64_t bits) noexcept { return CMetaText(reinterpret_cast<Box*>(bits)); }

std::size_t CMetaText::InternedCount() {
    std::size_t countL = 0;
    for (Shard& shard : Shards()) {   // one lock at a time: a figure, not a moment in time
        const std::lock_guard guard(shard.lock);
        countL += shard.boxes.size();
    }
    return countL;
}
