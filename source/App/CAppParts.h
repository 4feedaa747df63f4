#pragma once
#include <memory>
#include <vector>

#include "App/CAppPart.h"
#include "Core/CLog.h"

class CApp;

/** The parts that stand, in the order in which they were made. A part is known by its class.
    Threads  main.
    Owner    CApp. */
class CAppParts {
public:
    CAppParts() = default;
    ~CAppParts() {
        while (!i_parts.empty()) i_parts.pop_back();   // the last one first
    }
    CAppParts(const CAppParts&) = delete;
    CAppParts& operator=(const CAppParts&) = delete;

    template <class Part>
    void Make(CApp& app) {
        i_parts.push_back({&kClass<Part>, std::make_unique<Part>(app)});
    }
    template <class Part>
    void Drop() {
        for (auto it = i_parts.begin(); it != i_parts.end(); ++it)
            if (it->classP == &kClass<Part>) {
                const std::unique_ptr<CAppPart> last = std::move(it->part);   // it finds itself no more
                i_parts.erase(it);
                return;
            }
    }
    /** Null before it is made and once it is dropped. */
    template <class Part>
    [[nodiscard]] Part* Find() const noexcept {
        for (const Entry& entry : i_parts)
            if (entry.classP == &kClass<Part>) return static_cast<Part*>(entry.part.get());
        return nullptr;
    }
    /** `work(part)` for each, the first made first; none is made or dropped meanwhile. */
    template <class Work>
    void ForEach(const char* whatZ, const Work& work) const {
        for (const Entry& entry : i_parts) {
            try {
                work(*entry.part);
            } catch (const std::exception& fault) {
                LogF("### Error %s: %s", whatZ, fault.what());
            }
        }
    }

private:
    struct Entry {
        const char* classP;
        std::unique_ptr<CAppPart> part;
    };
    template <class Part>
    static inline const char kClass = 0;   // its address tells the classes apart

    std::vector<Entry> i_parts;
};
