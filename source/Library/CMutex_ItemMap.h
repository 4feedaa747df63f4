#pragma once
#include <algorithm>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>
#include <vector>

#include "Threads/CMutex.h"

/** The objects of one kind by their id. Many read at a time, so that a worker that looks through all of them does not hold
    up the main thread's look-ups; the CMutex is the gate in front, held by a change until the readers have left.
    Threads  changed on the main thread, looked up on any. Find's pointer is for the main thread, which alone takes
             objects out; others work inside With, which keeps the object alive: short, no waits, no second look-up, and of
             other locks only that of a CMeta.
    Owner    CSongDatabase, shared with the sorts that run. */
template <class ID, class Item>
class CMutex_ItemMap final : public CMutex {
public:
    /** False, and `itemP` is destroyed, when the id is taken. */
    bool Add(ID id, std::unique_ptr<Item> itemP) {
        const Changing guard(*this);
        return i_items.try_emplace(id, std::move(itemP)).second;
    }
    /** The object, to be destroyed without the lock; null when there is none. */
    [[nodiscard]] std::unique_ptr<Item> Take(ID id) {
        const Changing guard(*this);
        const auto it = i_items.find(id);
        if (it == i_items.end()) return nullptr;
        std::unique_ptr<Item> itemP = std::move(it->second);
        i_items.erase(it);
        return itemP;
    }
    [[nodiscard]] Item* Find(ID id) const {
        const Reading guard(*this);
        const auto it = i_items.find(id);
        return it == i_items.end() ? nullptr : it->second.get();
    }
    template <class Work>
    bool With(ID id, Work&& work) const {
        const Reading guard(*this);
        const auto it = i_items.find(id);
        if (it == i_items.end()) return false;
        work(*it->second);
        return true;
    }
    /** `work(find)` under one lock: find(id) answers the object or null. For many look-ups, a block at a time. */
    template <class Work>
    void WithMany(Work&& work) const {
        const Reading guard(*this);
        work([this](ID id) -> Item* {
            const auto it = i_items.find(id);
            return it == i_items.end() ? nullptr : it->second.get();
        });
    }
    /** In no order. On a worker the lock is left between two steps, so that a million of them hold up nobody: what comes
        or goes meanwhile may be missed or told. */
    [[nodiscard]] std::vector<ID> Ids() const {
        std::vector<ID> ids;
        for (std::size_t bucket = 0, bucketsL = 0;;) {
            const Reading guard(*this);
            if (bucketsL != i_items.bucket_count()) {   // the first step, or it grew: all again
                bucketsL = i_items.bucket_count();
                bucket = 0;
                ids.clear();
                ids.reserve(i_items.size());
            }
            for (const std::size_t end = std::min(bucketsL, bucket + kStep_Buckets); bucket < end; ++bucket)
                for (auto it = i_items.begin(bucket); it != i_items.end(bucket); ++it) ids.push_back(it->first);
            if (bucket == bucketsL) return ids;
        }
    }
    [[nodiscard]] std::size_t Count() const {
        const Reading guard(*this);
        return i_items.size();
    }
    void Reserve(std::size_t countL) {
        const Changing guard(*this);
        i_items.reserve(countL);
    }
    void Clear() {
        std::unordered_map<ID, std::unique_ptr<Item>> gone;
        const Changing guard(*this);
        gone.swap(i_items);   // declared first: destroyed after the lock is left
    }

private:
    static constexpr std::size_t kStep_Buckets = 4096;   // under one lock

    class Reading {
    public:
        explicit Reading(const CMutex_ItemMap& map) : i_map(map) {
            const Scope gate(map);
            map.i_readers.lock_shared();
        }
        ~Reading() { i_map.i_readers.unlock_shared(); }
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;

    private:
        const CMutex_ItemMap& i_map;
    };
    /** Readers that come wait at the gate: a change waits for those alone that are in. */
    class Changing {
    public:
        explicit Changing(const CMutex_ItemMap& map) : i_gate(map), i_guard(map.i_readers) {}

    private:
        const Scope i_gate;
        const std::unique_lock<std::shared_mutex> i_guard;
    };

    mutable std::shared_mutex i_readers;   // guards the rest
    std::unordered_map<ID, std::unique_ptr<Item>> i_items;
};
