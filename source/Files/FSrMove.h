#pragma once
#include <string_view>

#include "Files/CFileRef.h"

/** Moves a file or folder into `folder`, under `newName` or else its own name; `file` names it there afterwards.
    Within a volume it is a rename, across volumes a copy and then a deletion. A file of the name that is there goes to
    the trash first, and is deleted when the move is done; it comes back when the move fails. A folder of the name that
    is there is dupFNErr. Across volumes a failed deletion leaves both, and is told.
    Threads  any; blocks as long as the disc does. */
OSErr FSrMoveFile(CFileRef& file, const CFileRef& folder, std::string_view newName = {});
