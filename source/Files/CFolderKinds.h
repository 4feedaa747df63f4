#pragma once
#include <map>
#include <mutex>

#include "Files/CFileRef.h"

/** The folders of the application, by number. */
enum class FolderKind : short {
    kRoot = 14,            // the "Vopla folder" in the user's music folder
    kDatabase = 15,        // the database's own; held
    kMusicLibrary = 16,    // "Music Library Location"; held, kind 17 until then
    kMusic = 17,           // "Vopla Music" in the root
    kCDs = 18,             // "Vopla CDs" in the root
    kTemp = 19,            // "Vopla Temp" on the volume of a file
    kHeldFolder = 20,      // a further one that the preferences hold
    kPlugins = 21,         // "Vopla Plugins"
    kResources = 22,       // what is installed beside the program
    kPictures = 23,        // "pictures" in it
    kCacheLocation = 24,   // "Cache Folder Location"; held, kind 25 until then
    kDefaultCache = 25,    // "Vopla" in the caches folder
};

/** Finds the folders and makes those that may be made. Kinds 15, 16, 20 and 24 are told by whoever reads the
    preferences or opens the database.
    Threads  any.
    Owner    the application object.
    Errors   paramErr for a number outside 14 to 25; fnfErr for a held kind that nobody told; else what the disc says. */
class CFolderKinds {
public:
    /** `near` names the volume of kind 19; empty: that of the home. */
    OSErr Find(FolderKind kind, CFileRef& folder, const CFileRef& near = CFileRef());
    OSErr Find(long kindL, CFileRef& folder, const CFileRef& near = CFileRef());
    /** Tells a held folder; an empty one is forgotten. paramErr for another kind. */
    OSErr Hold(FolderKind kind, const CFileRef& folder);
    /** The root is looked for once; this makes the next Find look again, as after "Try again". A folder in `chosen`
        becomes the root, as after "Find it". */
    void ForgetRoot(const CFileRef& chosen = CFileRef());

private:
    OSErr FindRoot(CFileRef& folder);
    OSErr FindHeld(FolderKind kind, CFileRef& folder);
    OSErr FindPlugins(CFileRef& folder);

    std::mutex i_lock;   // guards all below; not held over the disc
    CFileRef i_root;
    std::map<FolderKind, CFileRef> i_held;
    bool i_pluginsMovedB = false;
};
