#pragma once
#include <vector>

#include "Storage/LibraryImage.h"

/** What the singer is called: by the key of singers, in old files by that of songs. */
[[nodiscard]] SuperString NameOf(const SingerRecord& record);
/** Whose folder it is among those of "Singers.xml": by the id of its own account; without one, by the folder's name or
    by the id of a list in it. The end when it is nobody's. */
[[nodiscard]] std::vector<SingerRecord>::const_iterator AccountOf(const SingerFolder& folder,
                                                                  const std::vector<SingerRecord>& together);
