#include "Library/CSong.h"

#include "Core/Assertions.h"
#include "Library/CSongDatabase.h"
#include "Meta/CMetaManager.h"
#include "Meta/MetaKeyTable.h"

namespace {
constexpr MetaKey kDuration = "drtn"_key, kActualDuration = "aDur"_key;
}

CSongMeta::CSongMeta(CSongDatabase* databaseP, SongID id) : i_databaseP(databaseP), i_id(id) {
    (void)AssertWords(Number(id) > 0, "GetSongID() > 0");
    MetaEntry entry{CM_Key_SONG_ID, CMetaValue(Number(id))};   // told, never set
    Load(std::span(&entry, 1));
}

void CSongMeta::OnChanged(MetaKey key, const CMetaValue& value) {
    if (i_databaseP == nullptr) return;
    if (value.Type() == ValType::ValType_SONGFILE) i_databaseP->NoteFile(i_id, value);
    // A key that the table does not know is hidden, but kept with the song.
    if (Manager().GetTraits(key).Has(kKeyFlag_Hidden) && FindMetaKeyRow(key) != nullptr) return;
    i_databaseP->QueueChange(i_id, key);
    if (key == kDuration) i_databaseP->QueueChange(i_id, kActualDuration);   // which follows from it
}

CMetaValue CSongMeta::MakeValue(MetaKey key) {
    if (key != kActualDuration) return {};
    const CMetaValue duration = Stored(kDuration);
    return duration ? CMetaValue(CMetaText::Of(Manager().GetTraits(kDuration).Display(duration))) : CMetaValue();
}

void CSongMeta::CheckSetter(MetaKey key) const {
    CMeta::CheckSetter(key);
    AssertNotIdentity(key);
}
