#include "Files/RevealFolder.h"

#include "Core/CLog.h"
#include "Files/FileURL.h"
#include "Platform/CUserInterface.h"

OSErr RevealFolder(CUserInterface& ui, const std::filesystem::path& folder) {
    return ui.OpenPage(FileURL(folder)) ? noErr : LogStep(fnfErr, "revealing", folder);
}
