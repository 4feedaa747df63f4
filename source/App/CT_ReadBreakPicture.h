#pragma once
#include <filesystem>
#include <memory>

#include "Core/Ref.h"
#include "Threads/CHandle.h"
#include "Threads/CT_Preemptive.h"

class CAS_QuickTimeVideo;
class CBreakScreen;
class COffscreen;

/** What a file of the break was: a picture, or a movie that is open. */
struct BreakPicture {
    BreakPicture();
    BreakPicture(BreakPicture&& other) noexcept;
    ~BreakPicture();
    std::unique_ptr<COffscreen> still;
    Ref<CAS_QuickTimeVideo> movieP;
};

/** Reads the file of the break, a picture at most as large as a screen of four thousand pixels.
    Owner    the fork. */
class CT_ReadBreakPicture final : public CT_Preemptive {
public:
    /** `screen` holds null once nobody waits for the picture any more. */
    CT_ReadBreakPicture(std::filesystem::path file, CHandle<CBreakScreen> screen);

protected:
    OSErr Operate(OSErr err) override;
    OSErr Completion(OSErr err) override;

private:
    const std::filesystem::path i_file;
    const CHandle<CBreakScreen> i_screen;
    BreakPicture i_picture;
};
