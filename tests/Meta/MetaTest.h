#pragma once
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

#include "Core/Assertions.h"
#include "Meta/CMeta.h"
#include "Meta/CMetaManager.h"

/** A manager, and what was asserted: a test that asserts nothing on purpose fails when anything is. */
class MetaTest : public testing::Test {
protected:
    explicit MetaTest(MetaSetup setup = {}) : i_manager(std::move(setup)) {
        s_asserted.clear();
        SetAssertHandler([](const char* textZ, const char*, long, bool) {
            const std::lock_guard guard(s_lock);
            s_asserted.emplace_back(textZ);
            return true;
        });
    }
    ~MetaTest() override {
        SetAssertHandler(nullptr);
        EXPECT_EQ(s_asserted, std::vector<std::string>());
    }
    /** What was asserted since the last call. */
    static std::vector<std::string> TakeAsserted() {
        const std::lock_guard guard(s_lock);
        return std::exchange(s_asserted, {});
    }
    CMetaManager i_manager;

private:
    static inline std::mutex s_lock;
    static inline std::vector<std::string> s_asserted;
};

/** A song that notes its changes. */
class NotingMeta : public CMeta {
public:
    explicit NotingMeta(MetaLevel level = MetaLevel::kSong) : CMeta(level) {}
    ~NotingMeta() override { Retire(); }
    std::vector<std::string> i_notes;   // "name=text", "name gone"
    CMetaValue i_made;                  // what MakeValue makes of "aDur"
    bool i_toldIdentityB = false;       // the identity keys may not be set

protected:
    void OnChanged(MetaKey key, const CMetaValue& value) override {
        const std::string text = MetaManager().GetTraits(key).Display(value).UTF8();
        i_notes.push_back(MetaKeyText(key) + (value ? "=" + text : " gone"));
    }
    CMetaValue MakeValue(MetaKey key) override { return key == "aDur"_key ? i_made : CMetaValue(); }
    void CheckSetter(MetaKey key) const override {
        CMeta::CheckSetter(key);
        if (i_toldIdentityB) AssertNotIdentity(key);
    }
};
