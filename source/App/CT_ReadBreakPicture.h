#pragma once
#include <filesystem>
#include <memory>

#include "Core/CT_Preemptive.h"

class CBreakScreen;
class COffscreen;

/** Reads the picture of the break, at most as large as a screen of four thousand pixels.
    Owner    the fork. */
class CT_ReadBreakPicture final : public CT_Preemptive {
public:
    /** `screen` holds null once nobody waits for the picture any more. */
    CT_ReadBreakPicture(std::filesystem::path file, std::shared_ptr<CBreakScreen*> screen);
    ~CT_ReadBreakPicture() override;

protected:
    OSErr Operate(OSErr err) override;
    OSErr Completion(OSErr err) override;

private:
    const std::filesystem::path i_file;
    const std::shared_ptr<CBreakScreen*> i_screen;   // what it holds is the main thread's
    std::unique_ptr<COffscreen> i_picture;
};
