#include "App/CT_ReadBreakPicture.h"

#include "App/CBreakScreen.h"
#include "Files/CFileRef.h"
#include "Graphics/COffscreen.h"
#include "Graphics/ImageFile.h"
#include "Movies/CAS_QuickTimeVideo.h"
#include "Threads/CHandle.h"

namespace {

constexpr Rect kMost{0, 0, 2160, 3840};

OSErr OpenMovie(const std::filesystem::path& file, Ref<CAS_QuickTimeVideo>& movieP) {
    if (const OSErr err = MakeSongMovie(CFileRef(file), movieP); Failed(err)) return err;
    std::uint64_t unitsL = 0;
    return movieP->Open(false, unitsL);
}

}   // namespace

BreakPicture::BreakPicture() = default;
BreakPicture::BreakPicture(BreakPicture&& other) noexcept = default;
BreakPicture::~BreakPicture() = default;

CT_ReadBreakPicture::CT_ReadBreakPicture(std::filesystem::path file, CHandle<CBreakScreen> screen)
    : CT_Preemptive("read break picture"), i_file(std::move(file)), i_screen(std::move(screen)) {}

OSErr CT_ReadBreakPicture::Operate(OSErr) {
    OSErr err = noErr;
    i_picture.still = ReadImageFile(i_file, kMost, err);
    if (i_picture.still != nullptr || err == fnfErr) return err;
    err = OpenMovie(i_file, i_picture.movieP);
    if (Failed(err)) i_picture.movieP = nullptr;
    return err;
}

OSErr CT_ReadBreakPicture::Completion(OSErr err) {
    if (CBreakScreen* const screenP = i_screen.Get(); screenP != nullptr)
        screenP->Take(i_file, std::move(i_picture), err);
    else if (i_picture.movieP != nullptr)
        static_cast<void>(i_picture.movieP->Close(false));
    return err;
}
