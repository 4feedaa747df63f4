#pragma once
#include <filesystem>

#include "Platform/OSErr.h"

class CUserInterface;

/** Shows a folder in the file manager of the desktop. Main thread. fnfErr, logged, when nothing shows folders here. */
OSErr RevealFolder(CUserInterface& ui, const std::filesystem::path& folder);
