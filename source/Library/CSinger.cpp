#include "Library/CSinger.h"

#include "Library/CSongDatabase.h"

namespace {
constexpr std::string_view kKey_SingerID = "siID";
}

void CSingerMeta::OnChanged(MetaKey, const CMetaValue&) {
    i_revisionL.fetch_add(1, std::memory_order_relaxed);
    if (i_databaseP != nullptr) i_databaseP->QueueSingerChange();
}

CSinger::CSinger(CSongDatabase* databaseP, SingerID id, PlaylistID venue)
    : i_id(id), i_venue(venue), i_databaseP(databaseP), i_meta(databaseP, i_revisionL) {
    i_lists.fill(kPlaylistID_New);
    MetaEntry entry{"siID"_key, CMetaValue(Number(id))};   // told, never set
    i_meta.Load(std::span(&entry, 1));
}

SuperString CSinger::Name() { return i_meta.GetString(i_meta.Has("SNGR"_key) ? "SNGR"_key : "name"_key); }

void CSinger::Touch() {
    i_revisionL.fetch_add(1, std::memory_order_relaxed);
    if (i_databaseP != nullptr) i_databaseP->SetDirty(true, "singer changed");
}

void CSinger::SetList(SingerList which, PlaylistID list) {
    if (std::exchange(i_lists[static_cast<std::size_t>(which)], list) != list) Touch();
}

bool CSinger::Owns(PlaylistID list) const { return std::ranges::find(i_lists, list) != i_lists.end(); }

void CSinger::SetSongInfo(CCFDictionary info) {
    if (info == i_record.songInfo) return;
    i_record.songInfo = std::move(info);
    Touch();
}

void CSinger::Load(const SingerRecord& record) {
    i_record = record;
    i_record.meta.Remove(kKey_SingerID);
    {
        const CMeta::QuietChanges quiet(i_meta);
        i_meta.FromDictionary(i_record.meta);
    }
    i_meta.SetDirty(false);
    // What was taken comes from the meta from now on; the rest stays as the file has it.
    for (const auto& [key, value] : i_meta.ToDictionary(CMeta::FileSlots::kWith, CMeta::HiddenKeys::kWith))
        i_record.meta.Remove(key);
    const auto idOf = [](std::uint32_t number) {
        return number == 0 ? kPlaylistID_New : PlaylistID{static_cast<std::int32_t>(number)};
    };
    i_lists = {idOf(record.tonightID), idOf(record.favoritesID), idOf(record.historyID)};
}

SingerRecord CSinger::Record() const {
    SingerRecord record = i_record;
    for (const auto& [key, value] : i_meta.ToDictionary(CMeta::FileSlots::kWith, CMeta::HiddenKeys::kWith))
        record.meta.Set(key, value);
    const auto numberOf = [this](SingerList which) {
        return static_cast<std::uint32_t>(std::max(Number(List(which)), 0));
    };
    record.tonightID = numberOf(SingerList::kTonight);
    record.favoritesID = numberOf(SingerList::kFavorites);
    record.historyID = numberOf(SingerList::kHistory);
    return record;
}

CMetaValue CSingerMapValues::Value(SingerID singer, MetaKey key) const {
    CMetaValue value;
    i_singersRef->With(singer, [&](CSinger& found) { value = found.Meta().Value(key, ValueMode::kMakeIfAllowed); });
    return value;
}
