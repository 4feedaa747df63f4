#pragma once
#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Meta/CDataTraits.h"

class CMeta;

/** How the manager is set up: what it must know of the world above. */
struct MetaSetup {
    TraitsSetup traits = {};
    bool moveArticlesB = true;   // the preference "Move 'The' to end of Artits title", as it stands at start
    std::string software = {};   // name and version of the program, written into tags
};

/** The one table of keys and the register of all CMeta objects. Made before the library, destroyed after it.
    Threads  any. Keys of the table are found without a lock; an unknown one is added under the manager's. */
class CMetaManager {
public:
    explicit CMetaManager(MetaSetup setup = {});
    ~CMetaManager();
    CMetaManager(const CMetaManager&) = delete;
    CMetaManager& operator=(const CMetaManager&) = delete;

    /** The traits of a key. An unknown key gets traits of its own, hidden and without a kind; once there are
        CMetaSlots::kMostKeys of them, which only a broken file can bring about, all further ones share the traits of
        CM_Key_NONE, for which nothing can be stored. */
    [[nodiscard]] CDataTraits& GetTraits(MetaKey key);
    [[nodiscard]] CDataTraits& TraitsAt(std::uint16_t index) const;
    /** The key whose title this is, among those offered as columns; CM_Key_NONE when there is none. */
    [[nodiscard]] MetaKey FindKeyByTitle(const SuperString& title) const;

    /** The keys of the start: in the order of making, and by their code. */
    [[nodiscard]] const std::vector<MetaKey>& Keys() const noexcept { return i_keys; }
    [[nodiscard]] const std::vector<MetaKey>& SortedKeys() const noexcept { return i_sortedKeys; }

    /** While the library loads, texts are taken as they are stored. */
    void SetLoading(bool loadingB) noexcept { i_loadingB.store(loadingB, std::memory_order_relaxed); }
    [[nodiscard]] bool IsLoading() const noexcept { return i_loadingB.load(std::memory_order_relaxed); }
    void SetMoveArticles(bool moveB) noexcept { i_moveArticlesB.store(moveB, std::memory_order_relaxed); }
    [[nodiscard]] bool MovesArticles() const noexcept { return i_moveArticlesB.load(std::memory_order_relaxed); }
    [[nodiscard]] const std::string& Software() const noexcept { return i_software; }

    /** The object of a serial number, null when it is gone. It stays only as long as its owner keeps it. */
    [[nodiscard]] CMeta* FindMeta(std::uint32_t serial) const;
    [[nodiscard]] std::size_t MetaCount() const;

private:
    friend class CMeta;
    [[nodiscard]] std::uint32_t Register(CMeta& meta);
    void Unregister(std::uint32_t serial) noexcept;

    static constexpr std::size_t kHashSize = 8192;   // a power of two, at least four times kMostKeys
    /** The number of a key, or -1. */
    [[nodiscard]] int Find(MetaKey key) const noexcept;
    CDataTraits& Add(const MetaKeyRow& row);

    TraitsSetup i_setup;
    std::string i_software;
    std::atomic<bool> i_loadingB{false}, i_moveArticlesB;
    std::vector<MetaKey> i_keys, i_sortedKeys;   // fixed once constructed

    std::mutex i_lock;   // guards the adding of traits
    std::unique_ptr<std::atomic<std::uint64_t>[]>
        i_hash;   // code << 16 | number + 1; 0 is free; only filled, never cleared
    std::unique_ptr<std::atomic<CDataTraits*>[]> i_traits;
    std::atomic<std::uint32_t> i_traitsL{0};

    // Serial numbers are given out in rising order, so the register is blocks of pointers; an empty block goes.
    static constexpr std::uint32_t kBlockSize = 1024;
    struct Block {
        std::uint32_t livingL = 0;
        std::array<CMeta*, kBlockSize> metas{};
    };
    mutable std::mutex i_registerLock;
    std::map<std::uint32_t, std::unique_ptr<Block>> i_blocks;
    std::uint32_t i_nextSerial = 1;
    std::size_t i_livingL = 0;
};

/** Set by the manager's constructor, cleared by its destructor. */
extern CMetaManager* s_MetaManagerP;
/** The manager; its absence is asserted, and a spare one answers. */
[[nodiscard]] CMetaManager& MetaManager();
