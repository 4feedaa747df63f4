#pragma once
#include "Files/CFileRef.h"
#include "Values/CCFDictionary.h"

/** The dictionary by which every library file names a file: "type" 2 with "alias", 3 with nothing, 4 with "path".
    Errors   paramErr for an empty reference, which has no form. May resolve `file`. */
OSErr WriteFileRef(CFileRef& file, CCFDictionary& dictionary);
/** paramErr for another type, or none, or a value of a wrong type; `file` stays as it was then. */
OSErr ReadFileRef(const CCFDictionary& dictionary, CFileRef& file);
