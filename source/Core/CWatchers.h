#pragma once
#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

/** Those who are told of changes. Watchers may come and go while they are told, the list among them: one that has left
    is told no more, one that came is told from the next time on.
    Threads  one.
    Owner    whoever tells. The watchers are not owned. */
template <class Watcher>
class CWatchers {
public:
    CWatchers() : i_listRef(std::make_shared<List>()) {}
    ~CWatchers() { i_listRef->Clear(); }   // a Tell below on the stack finds nobody any more
    CWatchers(const CWatchers&) = delete;
    CWatchers& operator=(const CWatchers&) = delete;

    void Add(Watcher& watcher) { i_listRef->watchersP.push_back(&watcher); }
    void Remove(Watcher& watcher) {
        std::ranges::replace(i_listRef->watchersP, &watcher, static_cast<Watcher*>(nullptr));
        i_listRef->Tidy();
    }
    void Clear() { i_listRef->Clear(); }

    template <class Say>
    void Tell(Say&& say) {
        const Telling telling(i_listRef);
        for (std::size_t n = 0; n < telling.countL; ++n)
            if (Watcher* const watcherP = telling.listRef->watchersP[n]; watcherP != nullptr) say(*watcherP);
    }

private:
    struct List {
        std::vector<Watcher*> watchersP;   // null for one that left while others were told
        int tellingL = 0;                  // how many times deep: no place changes meanwhile
        void Tidy() {
            if (tellingL == 0) std::erase(watchersP, nullptr);
        }
        void Clear() {
            std::ranges::fill(watchersP, nullptr);
            Tidy();
        }
    };
    /** One round. Holds the list, which may go with its owner, and counts who was there when it began. */
    struct Telling {
        explicit Telling(std::shared_ptr<List> list) : listRef(std::move(list)), countL(listRef->watchersP.size()) {
            ++listRef->tellingL;
        }
        ~Telling() {
            --listRef->tellingL;
            listRef->Tidy();
        }
        Telling(const Telling&) = delete;
        Telling& operator=(const Telling&) = delete;
        const std::shared_ptr<List> listRef;
        const std::size_t countL;
    };
    const std::shared_ptr<List> i_listRef;
};
