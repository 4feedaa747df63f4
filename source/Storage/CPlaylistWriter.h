#pragma once
#include <memory>

#include "Library/CMutex_PLIVec.h"
#include "Library/CPlayList.h"
#include "Storage/PlaylistRecord.h"

class CCFXmlWriter;

/** One list as its file will hold it: its keys as they were when this was made, its rows as they are when it is
    written, straight from the list, whatever their number. A list that goes in the meantime has no rows.
    Threads  made on the main thread; Write on a worker. The list's lock is held for a block of its rows at a time, and
             for a row with values of its own. */
class CPlaylistWriter {
public:
    explicit CPlaylistWriter(const CPlayList& list);
    /** As "Library.xml" names it: name, id and kind alone. */
    [[nodiscard]] static PlaylistRecord Reference(const CPlayList& list);
    void Write(CCFXmlWriter& writer) const;

private:
    void WriteRow(CCFXmlWriter& writer, const PLRow& row, bool ownValuesB) const;

    CCFDictionary i_keys;
    std::shared_ptr<const CMutex_PLIVec> i_rows;
};
