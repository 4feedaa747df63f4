#include "Storage/CT_SDB_WritePList.h"

#include "Storage/CLibraryStore.h"

OSErr CT_SDB_WritePList::Operate(OSErr err) {
    i_saveRef->RunLists();
    i_saveRef->runningB.store(false, std::memory_order_release);
    return err;
}

OSErr CT_SDB_WritePList::Completion(OSErr err) {
    if (CLibraryStore* const storeP = i_storeRef.Get(); storeP != nullptr) storeP->Saved(i_saveRef);
    return err;
}
