#pragma once
#include <string>
#include <string_view>

#include "Files/CFileRef.h"

/** Of folders in folders; deeper ones are left alone. */
inline constexpr int kFolder_DepthMost = 256;

/** Single files and folders. Each answers a status; what failed at the system leaves an "### FS Error" line, but that
    something is not there is an answer and leaves none.
    Threads  any; no function holds a lock. */

/** True in `existsB` for anything of the name, a dangling link too. */
OSErr FSrObjectExists(const CFileRef& file, bool& existsB);
OSErr FSrFileExists(const CFileRef& file, bool& existsB);
OSErr FSrFolderExists(const CFileRef& file, bool& existsB);
/** The path of the file where it is now: a reference with an alias is looked for. */
OSErr FSrGetPath(CFileRef& file, CFileRef::Path& path);
/** paramErr for a folder, pipe or device; fnfErr when missing. */
OSErr FSrCheckFile(const CFileRef& file, FileInfo& info);

/** errFSMissingName for an empty name, bdNamErr for ".", "..", one with "/" or NUL, or over 255 bytes. */
OSErr FSrCheckName(std::string_view name);

OSErr FSrFindOrCreateFile(const CFileRef& parent, std::string_view name, CFileRef& file);
OSErr FSrFindOrCreateFolder(const CFileRef& parent, std::string_view name, CFileRef& folder);
/** dupFNErr when anything of the name is there. */
OSErr FSrCreateFolder(const CFileRef& parent, std::string_view name, CFileRef& folder);
/** The folder and all that is missing above it; `mode` for each new one. */
OSErr FSrMakeFolders(const CFileRef::Path& folder, std::uint32_t mode = 0777);
/** In its folder; dupFNErr when the name is taken, but by the file itself, in other capitals on a disc that does not tell
    them. `file` has the new name afterwards. */
OSErr FSrRename(CFileRef& file, std::string_view newName);
/** A file, link, or folder with all that is in it; links are not followed. fnfErr when missing. */
OSErr FSrDelete(const CFileRef& file);
/** Whether both lie on one volume; what does not exist yet counts as where its nearest folder is. */
OSErr FSrOnSameVolume(const CFileRef& one, const CFileRef& other, bool& sameB);
/** The number of the volume that holds `path`, or its nearest folder that is there. */
OSErr FSrVolume(const CFileRef::Path& path, std::uint64_t& device);
/** Both paths lead to one file. */
[[nodiscard]] bool FSrIsSameFile(const CFileRef& one, const CFileRef& other);
/** `name` when it is free in `folder`, or names `self`, else "name 2.ext" and so on. Somebody else may take it in the
    meantime. */
OSErr FSrMakeUniqueName(const CFileRef& folder, std::string_view name, std::string& unique, const CFileRef& self = {});
/** The names in a folder, sorted. */
OSErr FSrList(const CFileRef& folder, std::vector<std::string>& names);
/** Brings the names of a folder down to the disc. */
OSErr FSrSyncFolder(const CFileRef& folder);
