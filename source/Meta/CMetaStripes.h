#pragma once
#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "Core/Ref.h"

class CData;
class CMeta;

/** What a CMeta belongs to; also the order in which their locks are taken, the row's first. */
enum class MetaLevel : std::uint8_t { kRow, kSinger, kSong };
inline constexpr std::size_t kMetaLevels = 3;

/** One lock of a fixed pool: many CMeta share it, and it outlives them all, so that a CData can wait on it without
    knowing whether its owner still lives. With it, who holds a CData of one of these CMeta.
    Order    a CMeta's lock, then `i_handlesLock`, under which nothing else is taken. */
class CMetaStripe {
public:
    [[nodiscard]] static CMetaStripe& Of(MetaLevel level, std::uint32_t serial) noexcept;

    [[nodiscard]] std::recursive_mutex& Lock() noexcept { return i_lock; }

    /** The living CData of a place, null when nobody holds one. */
    [[nodiscard]] Ref<CData> Find(const CMeta* ownerP, std::uint16_t keyIndex);
    void Add(const CMeta* ownerP, std::uint16_t keyIndex, CData* dataP);
    /** Forgets `dataP`, if it is still the one of that place. */
    void Remove(const CMeta* ownerP, std::uint16_t keyIndex, const CData* dataP);

private:
    struct Place {
        const CMeta* ownerP;
        std::uint16_t keyIndex;
        friend bool operator==(const Place&, const Place&) = default;
    };
    struct PlaceHash {
        std::size_t operator()(const Place& place) const noexcept {
            return reinterpret_cast<std::uintptr_t>(place.ownerP) * 31 + place.keyIndex;
        }
    };
    std::recursive_mutex i_lock;
    std::mutex i_handlesLock;
    std::unordered_map<Place, CData*, PlaceHash> i_handles;
};

/** The lock of one CMeta for as long as the object lives. Recursive. On one thread, of each level one CMeta at a time,
    and levels in their order: anything else could wait for ever, and is asserted. */
class MetaLock {
public:
    explicit MetaLock(const CMeta& meta);
    ~MetaLock();
    MetaLock(const MetaLock&) = delete;
    MetaLock& operator=(const MetaLock&) = delete;

private:
    std::recursive_mutex& i_lock;
    const std::size_t i_level;
    const CMeta* const i_outerP;   // whose lock this thread held at this level before
};
