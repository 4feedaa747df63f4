#include "Storage/CT_Preemtive_SaveSongs.h"

#include "Storage/CLibraryStore.h"

OSErr CT_Preemtive_SaveSongs::Operate(OSErr err) {
    i_saveRef->RunSongs();
    i_saveRef->runningB.store(false, std::memory_order_release);
    return err;
}

OSErr CT_Preemtive_SaveSongs::Completion(OSErr err) {
    if (const auto storeRef = i_storeRef.lock(); storeRef != nullptr && *storeRef != nullptr)
        (*storeRef)->SongsSaved(i_saveRef);
    return err;
}
