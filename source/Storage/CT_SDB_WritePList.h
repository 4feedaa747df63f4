#pragma once
#include <memory>

#include "Storage/CLibrarySave.h"
#include "Threads/CHandle.h"
#include "Threads/CT_Preemptive.h"

class CLibraryStore;

/** The second half of a save: the property lists, one after the other.
    Owner    itself; the store may go while it runs, then nobody hears of its end. */
class CT_SDB_WritePList final : public CT_Preemptive {
public:
    CT_SDB_WritePList(std::shared_ptr<CLibrarySave> saveRef, CHandle<CLibraryStore> storeRef)
        : CT_Preemptive("No Kill: saving plist"), i_saveRef(std::move(saveRef)), i_storeRef(std::move(storeRef)) {}

protected:
    OSErr Operate(OSErr err) override;
    OSErr Completion(OSErr err) override;

private:
    std::shared_ptr<CLibrarySave> i_saveRef;
    CHandle<CLibraryStore> i_storeRef;
};
