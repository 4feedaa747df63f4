#include "Play/LaunchFile.h"

#include "Core/CLog.h"
#include "Files/FSError.h"
#include "Platform/Helper.h"

OSErr LaunchFile(const CFileRef& file) {
    // An absolute path never looks like an option or an URL.
    std::error_code err;
    const std::filesystem::path whole = std::filesystem::absolute(file.GetPath(), err);
    if (err) return LogStep(MapErrno(err.value()), "launch", file.GetPath());
    return LogStep(FSError(StartHelper("xdg-open", {whole.string()}), "posix_spawn", "xdg-open"), "launch", whole);
}
