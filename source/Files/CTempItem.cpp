#include "Files/CTempItem.h"

#include <atomic>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <random>

#include "Core/CLog.h"
#include "Files/FSError.h"
#include "Files/FSrFolders.h"
#include "Files/FSrObjects.h"

namespace {

constexpr int kCreate_Tries = 20;

/** No two of one process are alike, and those of two processes hardly; mkdir decides. */
std::string NextName(std::string_view suffix) {
    static const std::uint64_t s_start = std::random_device{}() | static_cast<std::uint64_t>(std::random_device{}())
                                                                      << 32;
    static std::atomic<std::uint64_t> s_count{0};
    char text[24];
    std::snprintf(text, sizeof text, "%016" PRIx64, s_start + s_count.fetch_add(1, std::memory_order_relaxed));
    return std::string(text) + std::string(suffix);
}

}   // namespace

CTempItem::~CTempItem() {
    if (IsMade()) static_cast<void>(Delete());   // logged; the next purge tries again
}

OSErr CTempItem::Hold(FileAccess access) {
    if (const OSErr err = i_hold.Open(i_item, access); Failed(err)) return err;
    const OSErr err = i_hold.Lock();
    if (err == opWrErr) return err;   // a purge came between
    FileInfo open, named;             // a volume without locks is as good as one where nobody purges
    if (const OSErr looked = i_hold.Look(open); Failed(looked)) return looked;
    const int looked = CFileCalls::Get().Look(i_item.GetPath(), false, named);
    if (looked != 0) return FSError(looked, "stat", i_item.GetPath());
    return open.inodeL == named.inodeL ? noErr : fnfErr;
}

OSErr CTempItem::CreateIn(FSCreateType createType, const CFileRef& temp, std::string_view suffix) {
    const std::string name = NextName(suffix);
    if (const OSErr err = LogStep(FSrCheckName(name), "getting temp path", temp.GetPath()); Failed(err)) return err;
    CFileRef item(temp, name);
    if (createType == FSCreateTemp_FOLDER) {
        const int err = CFileCalls::Get().MakeFolder(item.GetPath(), 0700);
        if (err != 0) return LogStep(FSError(err, "mkdir", item.GetPath()), "creating temp folder", item.GetPath());
        i_item = item;
        return Hold(FileAccess::kFolder);
    }
    int handle = -1;
    const int err = CFileCalls::Get().Open(item.GetPath(), FileAccess::kCreateNew, 0600, handle);
    if (err != 0) return LogStep(FSError(err, "open", item.GetPath()), "creating temp file", item.GetPath());
    CFileCalls::Get().Close(handle);
    i_item = item;
    if (const OSErr held = Hold(FileAccess::kRead); Failed(held)) return held;
    bool existsB = false;
    if (const OSErr seen = FSrFileExists(i_item, existsB); Failed(seen))
        return LogStep(seen, "seeing if temp file exists", item.GetPath());
    return existsB ? noErr : LogStep(fnfErr, "temp file does not exists", item.GetPath());
}

OSErr CTempItem::Create(FSCreateType createType, const CFileRef& near, std::string_view suffix) {
    if (IsMade()) return dupFNErr;
    OSErr err = noErr;
    // What a purge or another item's end takes between two steps is made again.
    for (int tries = 0; tries < kCreate_Tries; ++tries) {
        CFileRef temp;
        err = FSrFindVolumeTemp(near, i_grandParent);
        if (Failed(LogStep(err, "finding temp grand parent folder", near.GetPath()))) return err;
        err = FSrFindOrCreateFolder(i_grandParent, "temp", temp);
        if (Failed(LogStep(err, "creating temp folder", i_grandParent.GetPath()))) {
            RemoveHiddenTemp(i_grandParent);
            return err;
        }
        err = CreateIn(createType, temp, suffix);
        if (!Failed(err)) return noErr;
        if (IsMade()) {
            if (i_hold.IsOpen()) static_cast<void>(i_hold.Close());
            static_cast<void>(Delete());
        }
        if (err != fnfErr && err != opWrErr && err != dupFNErr) return err;
    }
    return err;
}

OSErr CTempItem::Delete() {
    if (!IsMade()) return noErr;
    bool thereB = false;
    OSErr err = FSrObjectExists(i_item, thereB);
    if (!Failed(err) && thereB) err = FSrDelete(i_item);
    Leave();
    // A place beside a file goes with its last item; others may be in it still, and then these fail.
    RemoveHiddenTemp(i_grandParent);
    return err;
}

void CTempItem::Leave() {
    i_item = CFileRef();
    if (i_hold.IsOpen()) static_cast<void>(i_hold.Close());
}
