#pragma once
#include "Files/CFileRef.h"

/** What went to the trash: its new place, and the card that tells where it was. */
struct TrashedFile {
    CFileRef file, card;
};

/** Moves a file or folder into the trash of its volume: the user's own for the volume of the home, else that at the top
    of the volume. The card is written first, so that a half move leaves a card and no lost file. Never copies.
    Threads  any.
    Source   Trash specification 1.0 of freedesktop.org. */
OSErr FSrMoveToTrash(const CFileRef& file, TrashedFile* trashedP = nullptr);

/** Deletes for good what FSrMoveToTrash moved, with its card. */
OSErr FSrDeleteTrashed(const TrashedFile& trashed);
/** Puts it back under its old path; dupFNErr when that is taken. */
OSErr FSrRestoreTrashed(const TrashedFile& trashed, const CFileRef& place);

/** The trash folder for `file`, the one that holds "files" and "info"; made when missing. */
OSErr FSrFindTrash(const CFileRef& file, CFileRef& trash);
