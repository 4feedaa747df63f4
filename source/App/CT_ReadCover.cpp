#include "App/CT_ReadCover.h"

#include "App/CCoverArt.h"
#include "Core/CLog.h"
#include "Graphics/COffscreen.h"
#include "Graphics/ImageFile.h"
#include "Threads/CHandle.h"

namespace {
constexpr Rect kCover_Most{0, 0, 600, 600};
}

CT_ReadCover::CT_ReadCover(std::filesystem::path file, CHandle<CCoverArt> covers)
    : CT_Preemptive("read cover"), i_file(std::move(file)), i_covers(std::move(covers)) {}

OSErr CT_ReadCover::Operate(OSErr) {
    OSErr err = noErr;
    i_cover = ReadCover(CFileRef(i_file), kCover_Most, err);
    return LogStep(err, "reading the cover", i_file);
}

OSErr CT_ReadCover::Completion(OSErr err) {
    if (CCoverArt* const coversP = i_covers.Get(); coversP != nullptr) coversP->Take(i_file, std::move(i_cover));
    return err;
}
