#include "Meta/CData.h"

#include <atomic>
#include <map>
#include <memory>
#include <random>
#include <thread>

#include "Meta/MetaTest.h"

namespace {

class CDataTest : public MetaTest {
protected:
    NotingMeta i_meta;
};

TEST_F(CDataTest, AValueKeepsItsIdentityWhileItIsHeld) {
    i_meta.SetString("name"_key, "one");
    const Ref<CData> first = i_meta.GetRetainedValue("name"_key);
    ASSERT_TRUE(first);
    EXPECT_EQ(i_meta.GetRetainedValue("name"_key), first);
    EXPECT_EQ(first->RetainCount(), 1);
    EXPECT_EQ(first->GetOwner(), &i_meta);
    EXPECT_EQ(first->Type(), CData::ValType_STRING);

    i_meta.SetString("name"_key, "two");   // copied in
    EXPECT_EQ(i_meta.GetRetainedValue("name"_key), first);
    EXPECT_EQ(first->GetDisplayString(), "two");
    const auto text = DataAs<CData_String>(first);
    ASSERT_TRUE(text);
    i_meta.i_notes.clear();
    EXPECT_TRUE(text->Set("three"));
    EXPECT_FALSE(text->Set("three"));
    EXPECT_EQ(text->Get(), "three");
    EXPECT_EQ(i_meta.GetString("name"_key), "three");
    EXPECT_EQ(i_meta.i_notes, std::vector<std::string>{"name=three"});
    EXPECT_FALSE(DataAs<CData_Integer>(first));
    i_meta.SetString("arts"_key, "shifts the places");
    i_meta.SetInteger("soID"_key, 1);
    EXPECT_EQ(text->Get(), "three");
}

TEST_F(CDataTest, AValueThatLeavesStaysWithItsHolder) {
    i_meta.SetInteger("trak"_key, 7);
    const auto data = DataAs<CData_Integer>(i_meta.GetRetainedValue("trak"_key));
    EXPECT_TRUE(i_meta.RemoveValue("trak"_key));
    EXPECT_EQ(data->GetOwner(), nullptr);
    EXPECT_EQ(data->Get(), 7);
    EXPECT_TRUE(data->Set(8));
    EXPECT_FALSE(i_meta.Has("trak"_key));
    i_meta.SetInteger("trak"_key, 9);
    EXPECT_NE(i_meta.GetRetainedValue("trak"_key), Ref<CData>(data));
    EXPECT_EQ(data->Get(), 8);

    const auto second = DataAs<CData_Integer>(i_meta.GetRetainedValue("trak"_key));
    EXPECT_TRUE(second->Set(0));   // the default leaves the owner
    EXPECT_EQ(second->GetOwner(), nullptr);
    EXPECT_FALSE(i_meta.Has("trak"_key));

    Ref<CData> survivor;
    {
        NotingMeta shortLived;
        shortLived.SetString("name"_key, "stays");
        survivor = shortLived.GetRetainedValue("name"_key);
    }
    EXPECT_EQ(survivor->GetOwner(), nullptr);
    EXPECT_EQ(survivor->GetDisplayString(), "stays");
}

TEST_F(CDataTest, AnObjectThatIsGivenBecomesTheValue) {
    const Ref<CData> given = CData::Make("name"_key, CMetaValue(CMetaText::Of("given")));
    EXPECT_TRUE(i_meta.SetValue("name"_key, given));
    EXPECT_EQ(i_meta.GetRetainedValue("name"_key), given);
    EXPECT_FALSE(i_meta.SetValue("name"_key, given));

    const Ref<CData> second = CData::Make("name"_key, CMetaValue(CMetaText::Of("second")));
    EXPECT_TRUE(i_meta.SetValue("name"_key, second));   // the value alone: the identity stays
    EXPECT_EQ(i_meta.GetRetainedValue("name"_key), given);
    EXPECT_EQ(given->GetDisplayString(), "second");
    EXPECT_EQ(second->GetOwner(), nullptr);

    NotingMeta other;
    EXPECT_FALSE(other.SetValue("name"_key, given));
    EXPECT_EQ(TakeAsserted(), std::vector<std::string>{"dataP->GetOwner() == this"});
    EXPECT_FALSE(other.SetValue("arts"_key, second));
    EXPECT_FALSE(other.SetValue("name"_key, Ref<CData>()));
    EXPECT_EQ(TakeAsserted().size(), 2U);
    EXPECT_FALSE(other.SetValue("rtng"_key, CData::Make("rtng"_key, CMetaValue(255))));
    EXPECT_EQ(other.AllStored().size(), 0U);
}

TEST_F(CDataTest, CopyingAndComparing) {
    const Ref<CData> a = CData::Make("trak"_key, CMetaValue(1)), b = CData::Make("cryr"_key, CMetaValue(2));
    const Ref<CData> text = CData::Make("name"_key, CMetaValue(CMetaText::Of("1")));
    EXPECT_TRUE(a->IsLessThan(*b));
    EXPECT_FALSE(b->IsLessThan(*a) || a->IsEqual(*b) || a->IsLessThan(*text) || text->IsLessThan(*a));
    EXPECT_TRUE(a->CopyFrom(b.Get()));
    EXPECT_TRUE(a->IsEqual(*b) && a->IsSameValue(CMetaValue(2)));
    EXPECT_FALSE(a->CopyFrom(nullptr));
    EXPECT_EQ(TakeAsserted(), std::vector<std::string>{"otherP"});
    EXPECT_FALSE(a->CopyFrom(text.Get()));
    EXPECT_EQ(TakeAsserted().size(), 1U);
    EXPECT_FALSE(CData::Make("trak"_key, {}));
}

TEST_F(CDataTest, ManyThreadsOnFewValues) {
    constexpr int kRounds = 1500;
    const MetaKey keys[] = {"name"_key, "arts"_key, "albm"_key};
    std::vector<std::unique_ptr<CMeta>> metas;
    for (int n = 0; n < 3; ++n) metas.push_back(std::make_unique<CMeta>());
    std::atomic<int> wrongL{0};
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < 4; ++seed)
        threads.emplace_back([&, seed] {
            std::mt19937 random(seed);
            std::vector<Ref<CData>> held(4);
            for (int round = 0; round < kRounds; ++round) {
                CMeta& meta = *metas[random() % metas.size()];
                const MetaKey key = keys[random() % std::size(keys)];
                const std::string text = MetaKeyText(key) + std::to_string(random() % 5);
                switch (random() % 6) {
                    case 0:
                        meta.SetString(key, text);
                        break;
                    case 1:
                        meta.RemoveValue(key);
                        break;
                    case 2:
                        held[random() % held.size()] = meta.GetRetainedValue(key);
                        break;
                    case 3:
                        if (const auto& data = held[random() % held.size()])
                            data->Set(CMetaValue(CMetaText::Interned(MetaKeyText(data->Key()) + "9")));
                        break;
                    case 4: {
                        const Ref<CData> a = meta.GetRetainedValue(key), b = meta.GetRetainedValue(key);
                        if (a && b && a != b && a->GetOwner() != nullptr && a->GetOwner() == b->GetOwner()) ++wrongL;
                        break;
                    }
                    default: {
                        const CMetaValue value = meta.Stored(key);
                        if (value && !value.Text().starts_with(MetaKeyText(key))) ++wrongL;
                        if (const auto& data = held[0])
                            if (!data->GetDisplayString().UTF8().starts_with(MetaKeyText(data->Key()))) ++wrongL;
                    }
                }
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrongL, 0);
}

TEST_F(CDataTest, OwnersDieWhileOthersHoldTheirValues) {
    for (int round = 0; round < 200; ++round) {
        auto owner = std::make_unique<NotingMeta>();
        owner->SetInteger("trak"_key, 1);
        const auto data = DataAs<CData_Integer>(owner->GetRetainedValue("trak"_key));
        std::thread holder([data] {
            for (std::int32_t n = 1; n <= 20; ++n) data->Set(n + 1);
        });
        owner.reset();
        holder.join();
        EXPECT_GE(data->Get(), 1);
        EXPECT_EQ(data->GetOwner(), nullptr);
    }
}

TEST(CMetaText, EqualTextsAreOneWhileTheyLive) {
    const std::size_t beforeL = CMetaText::InternedCount();
    {
        const CMetaText a = CMetaText::Interned("an artist of this test"),
                        b = CMetaText::Interned("an artist of this test");
        EXPECT_EQ(a.View().data(), b.View().data());
        EXPECT_NE(CMetaText::Of("an artist of this test").View().data(), a.View().data());
        EXPECT_EQ(CMetaText::Of("an artist of this test"), a);
        EXPECT_EQ(CMetaText::InternedCount(), beforeL + 1);
        EXPECT_EQ(CMetaText::Interned(std::string_view("a\0b", 3)).View().size(), 3U);
        EXPECT_TRUE(CMetaText::Interned("").Empty());
    }
    EXPECT_EQ(CMetaText::InternedCount(), beforeL);
}

TEST(CMetaText, NoneIsLostOrDoubledWhenOthersGo) {
    const std::size_t beforeL = CMetaText::InternedCount();
    std::mt19937 random(4);
    std::map<std::string, CMetaText> held;
    for (int round = 0; round < 40'000; ++round) {
        const std::string text = "text " + std::to_string(random() % 3000);
        if (const auto it = held.find(text); it == held.end()) {
            held[text] = CMetaText::Interned(text);
        } else {
            ASSERT_EQ(CMetaText::Interned(text).View().data(), it->second.View().data());
            if (random() % 2 == 0) held.erase(it);
        }
        if (round % 1000 != 0) continue;
        ASSERT_EQ(CMetaText::InternedCount(), beforeL + held.size());
    }
    held.clear();
    EXPECT_EQ(CMetaText::InternedCount(), beforeL);
}

TEST(CMetaText, TextsComeAndGoOnManyThreads) {
    const std::size_t beforeL = CMetaText::InternedCount();
    std::atomic<int> wrongL{0};
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < 4; ++seed)
        threads.emplace_back([&, seed] {
            std::mt19937 random(seed);
            std::vector<CMetaText> held(3);
            for (int round = 0; round < 5000; ++round) {
                const std::string text = "shared text " + std::to_string(random() % 4);
                CMetaText& mine = held[random() % held.size()];
                mine = CMetaText::Interned(text);
                if (mine.View() != text) ++wrongL;
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrongL, 0);
    EXPECT_EQ(CMetaText::InternedCount(), beforeL);
}

}   // namespace
