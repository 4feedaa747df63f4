#include "Files/ReplaceFile.h"

#include "Core/CLog.h"
#include "Files/CFileRef.h"
#include "Files/CSafeSave.h"

OSErr ReplaceFile(const std::filesystem::path& named, std::span<const std::byte> bytes) {
    std::error_code problem;
    const std::filesystem::path file = std::filesystem::absolute(named, problem);
    if (problem || file.filename().empty()) return LogStep(paramErr, "replacing file: name", named);
    std::filesystem::create_directories(file.parent_path(), problem);   // the save tells when this failed
    return SafeSave(CFileRef(file), bytes);
}
