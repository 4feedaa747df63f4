#pragma once
#include <filesystem>
#include <memory>

#include "Threads/CHandle.h"
#include "Threads/CT_Preemptive.h"

class CCoverArt;
class COffscreen;

/** Reads the cover inside a song's file, in a size that is enough for the preview.
    Owner    the fork. */
class CT_ReadCover final : public CT_Preemptive {
public:
    /** `covers` holds null once nobody waits for it any more. */
    CT_ReadCover(std::filesystem::path file, CHandle<CCoverArt> covers);

protected:
    OSErr Operate(OSErr err) override;
    OSErr Completion(OSErr err) override;

private:
    const std::filesystem::path i_file;
    const CHandle<CCoverArt> i_covers;
    std::shared_ptr<const COffscreen> i_cover;
};
