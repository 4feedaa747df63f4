#include "App/CT_ReadBreakPicture.h"

#include "App/CBreakScreen.h"
#include "Graphics/COffscreen.h"
#include "Graphics/ImageFile.h"

namespace {
constexpr Rect kMost{0, 0, 2160, 3840};
}

CT_ReadBreakPicture::CT_ReadBreakPicture(std::filesystem::path file, std::shared_ptr<CBreakScreen*> screen)
    : CT_Preemptive("read break picture"), i_file(std::move(file)), i_screen(std::move(screen)) {}

CT_ReadBreakPicture::~CT_ReadBreakPicture() = default;

OSErr CT_ReadBreakPicture::Operate(OSErr) {
    OSErr err = noErr;
    i_picture = ReadImageFile(i_file, kMost, err);
    return err;
}

OSErr CT_ReadBreakPicture::Completion(OSErr err) {
    if (*i_screen != nullptr) (*i_screen)->Take(i_file, std::move(i_picture), err);
    return err;
}
