#include "Files/HelperApp.h"

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Files/FSError.h"
#include "Files/FSrObjects.h"
#include "Platform/Helper.h"

OSErr RunHelperApplication(const CFileRef& helper, const std::vector<std::string>& arguments, double seconds,
                           int& exitCode) {
    if (helper.IsEmpty()) return errFSMissingName;
    const HelperResult result = RunHelper(helper.GetPath(), arguments, seconds);
    exitCode = result.exitCode;
    if (result.errnoL != 0)
        return LogStep(FSError(result.errnoL, "posix_spawn", helper.GetPath()), "running helper", helper.GetPath());
    if (!result.timedOutB) return noErr;
    Log("Timeout running helper application “" + helper.GetName() + "”");
    ShowAlert(Localize("Timeout running helper application “%1”", {helper.GetName()}), helper.GetPath().string());
    return alreadyReportedErr;
}

OSErr RevealFile(const CFileRef& file) {
    bool folderB = false;
    if (const OSErr err = FSrFolderExists(file, folderB); Failed(err)) return err;
    const CFileRef folder = folderB ? file : file.GetParent();
    bool thereB = folderB;
    if (!folderB)
        if (const OSErr err = FSrFolderExists(folder, thereB); Failed(err)) return err;
    if (!thereB) return LogStep(fnfErr, "reveal", file.GetPath());
    // An absolute path never looks like an option or an URL.
    std::error_code err;
    const std::filesystem::path whole = std::filesystem::absolute(folder.GetPath(), err);
    if (err) return LogStep(MapErrno(err.value()), "reveal", file.GetPath());
    return LogStep(FSError(StartHelper("xdg-open", {whole.string()}), "posix_spawn", "xdg-open"), "reveal", whole);
}
