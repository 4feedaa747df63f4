#include "Storage/SingerAccounts.h"

#include <algorithm>

SuperString NameOf(const SingerRecord& record) {
    return record.meta.GetString(record.meta.Has("SNGR") ? "SNGR" : "name");
}

std::vector<SingerRecord>::const_iterator AccountOf(const SingerFolder& folder,
                                                    const std::vector<SingerRecord>& together) {
    return std::ranges::find_if(together, [&folder](const SingerRecord& record) {
        if (folder.singer) return record.ID() != 0 && record.ID() == folder.singer->ID();
        return NameOf(record) == SuperString(folder.folder.GetName()) ||
               std::ranges::any_of(folder.lists, [&](const PlaylistFile& list) {
                   const std::uint32_t id = list.record.ID();
                   return id != 0 && (id == record.tonightID || id == record.favoritesID || id == record.historyID);
               });
    });
}
