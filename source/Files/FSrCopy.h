#pragma once
#include <string_view>

#include "Files/CFileRef.h"

/** Copies `file` into `folder`, under `newName` or else its own name. A file of that name is replaced, but only when
    the copy is whole and on the disc: on failure it is as it was. Permission bits and time of change go along. dupFNErr
    when a folder of the name is there, paramErr for a copy onto itself, opWrErr while another makes the same. Threads
    any; blocks as long as the disc does. */
OSErr CopyFileToFolder(const CFileRef& file, const CFileRef& folder, CFileRef& copy, std::string_view newName = {});

/** Copies a file, or a folder with all that is in it, into `folder`. Links are copied as links; pipes and devices are
    passed over with a log line. An existing folder of the name is refused with dupFNErr, as is a folder inside the
    copied one with paramErr; after a failure no half folder is left. */
OSErr CopyToFolder(const CFileRef& source, const CFileRef& folder, CFileRef& copy, std::string_view newName = {});

/** The name under which a copy to `name` grows; a purge of the folder takes what a crash left. */
[[nodiscard]] std::string CopyInWorkName(std::string_view name);
[[nodiscard]] bool IsCopyInWorkName(std::string_view name);
