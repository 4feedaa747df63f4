#include "Storage/CT_Preemtive_SaveSongs.h"

#include "Storage/CLibraryStore.h"

OSErr CT_Preemtive_SaveSongs::Operate(OSErr err) {
    i_saveRef->RunSongs();
    i_saveRef->runningB.store(false, std::memory_order_release);
    return err;
}

OSErr CT_Preemtive_SaveSongs::Completion(OSErr err) {
    if (CLibraryStore* const storeP = i_storeRef.Get(); storeP != nullptr) storeP->SongsSaved(i_saveRef);
    return err;
}
