#include <chrono>
#include <ctime>

#include "Core/CLog.h"
#include "Files/FSrObjects.h"
#include "Storage/LibraryFiles.h"

OSErr SetAsideDamaged(CFileRef& file) {
    const CFileRef::Path path = file.GetPath();
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    ::localtime_r(&now, &local);
    std::array<char, 64> stamp{};
    std::strftime(stamp.data(), stamp.size(), " (damaged %Y-%m-%d %H.%M.%S)", &local);
    const std::string name = path.stem().string() + stamp.data() + path.extension().string();
    OSErr err = dupFNErr;
    for (int tries = 0; err == dupFNErr && tries < 3; ++tries) {   // somebody may take the free name first
        std::string unique;
        err = FSrMakeUniqueName(file.GetParent(), name, unique);
        if (!Failed(err)) err = FSrRename(file, unique);
    }
    if (Failed(err)) return LogStep(err, "setting a damaged file aside", path);
    LogF("### %s could not be read whole; it is kept as %s", path.c_str(), file.GetName().c_str());
    return noErr;
}
