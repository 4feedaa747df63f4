#include <fuzzer/FuzzedDataProvider.h>

#include "Core/Assertions.h"
#include "Library/CSong.h"
#include "Meta/CMeta_PLItem.h"
#include "Meta/CMetaManager.h"
#include "Platform/CFolders.h"

namespace {

CCFValue AnyValue(FuzzedDataProvider& data, int depth);

CCFDictionary AnyDictionary(FuzzedDataProvider& data, int depth) {
    const auto& keys = MetaManager().Keys();
    CCFDictionary dictionary;
    for (int left = data.ConsumeIntegralInRange(0, 12); left > 0 && data.remaining_bytes() > 0; --left) {
        // Mostly a key that we know; else a word of the files, or any bytes.
        const auto kind = data.ConsumeIntegral<std::uint8_t>();
        std::string key;
        if (kind < 200)
            key = MetaKeyText(keys[data.ConsumeIntegralInRange<std::size_t>(0, keys.size() - 1)]);
        else if (kind < 230)
            key = data.PickValueInArray({"type", "path", "alias", "ID", "Song ID", "Item Type", "Play"});
        else
            key = data.ConsumeRandomLengthString(6);
        dictionary.Set(key, AnyValue(data, depth));
    }
    return dictionary;
}

CCFValue AnyValue(FuzzedDataProvider& data, int depth) {
    switch (data.ConsumeIntegralInRange(0, depth > 0 ? 9 : 6)) {
        case 0:
            return data.ConsumeBool();
        case 1:
            return data.ConsumeIntegral<std::int64_t>();
        case 2:
            return std::int64_t{data.ConsumeIntegral<std::int16_t>()};
        case 3:
            return data.ConsumeFloatingPoint<double>();
        case 4:
            return CFDate{data.ConsumeFloatingPoint<double>()};
        case 5:
            return SuperString(data.ConsumeRandomLengthString(300));
        case 6:
            return CFData(data.ConsumeIntegralInRange<std::size_t>(0, 64));
        case 7:
            return CCFValue(CFArray{AnyValue(data, depth - 1)});
        default:
            return CCFValue(AnyDictionary(data, depth - 1));
    }
}

/** What was taken is written, and read again gives the same. */
template <class Meta>
void TakesAndGives(Meta& first, Meta& second, const CCFDictionary& dictionary) {
    first.FromDictionary(dictionary);
    for (const MetaEntry& entry : first.AllStored()) (void)first.GetDisplayString(entry.key);
    const CCFDictionary written = first.ToDictionary(CMeta::FileSlots::kWith);
    second.FromDictionary(written);
    if (!(second.ToDictionary(CMeta::FileSlots::kWith) == written)) __builtin_trap();
}

}   // namespace

// A song's, or a row's, dictionary with any values under any keys: nothing in it is a fault of ours (no assertion).
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    SetAssertHandler([](const char*, const char*, long, bool) -> bool { __builtin_trap(); });
    FuzzedDataProvider data(dataP, sizeL);
    CMetaManager manager;   // made anew: it learns the kinds of unknown keys
    const CCFDictionary dictionary = AnyDictionary(data, 3);
    {
        CSongMeta one(nullptr, SongID{7}), other(nullptr, SongID{7});
        TakesAndGives(one, other, dictionary);
    }
    {
        CMeta_PLItem one, other;
        TakesAndGives(one, other, dictionary);
    }
    return 0;
}
