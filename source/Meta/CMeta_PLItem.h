#pragma once
#include "Meta/CMeta.h"

/** What belongs to a row rather than to its song: the tick for playing, the pitch and tempo of this singer. Rows
    without such values have none. All other keys are the song's or the singer's (CPlayList::ValueOf).
    Owner    the CPlayListItem. */
class CMeta_PLItem final : public CMeta {
public:
    CMeta_PLItem() : CMeta(MetaLevel::kRow) {}
    ~CMeta_PLItem() override { Retire(); }

    /** A row may have a value of this key; whether its list goes by it says CPlayList::KeepsInRow. */
    [[nodiscard]] static bool IsRowKey(MetaKey key);
    /** Pitch and tempo. */
    [[nodiscard]] static bool IsTuningKey(MetaKey key) { return key == "PICH"_key || key == "TMPO"_key; }
    /** What its list's file has of the row and this program has no key for: written again as it is. Set at the load. */
    [[nodiscard]] const CCFDictionary& OtherKeys() const noexcept { return i_otherKeys; }
    void SetOtherKeys(CCFDictionary keys) { i_otherKeys = std::move(keys); }

protected:
    void CheckSetter(MetaKey key) const override;
    [[nodiscard]] bool Takes(MetaKey key) const override { return IsRowKey(key); }

private:
    CCFDictionary i_otherKeys;
};
