#pragma once
#include "Files/CDataFork.h"
#include "Files/CFileRef.h"

enum class FSCreateType : unsigned char { FSCreateTemp_FILE, FSCreateTemp_FOLDER };
using enum FSCreateType;

/** A file or folder in a temporary place, deleted with its life. It is locked while it lives, so that a purge, of this
    process or another, passes it over and takes what a crash left.
    Threads  one at a time; different items on any.
    Owner    whoever needs the place. */
class CTempItem {
public:
    CTempItem() = default;
    ~CTempItem();
    CTempItem(const CTempItem&) = delete;
    CTempItem& operator=(const CTempItem&) = delete;

    /** Makes an item with a name of its own on the volume of `near`: in "temp" in the volume's "Vopla Temp". `suffix`
        ends its name, such as an extension. */
    OSErr Create(FSCreateType createType, const CFileRef& near, std::string_view suffix = {});
    [[nodiscard]] const CFileRef& Ref() const { return i_item; }
    [[nodiscard]] bool IsMade() const { return !i_item.IsEmpty(); }
    /** Deletes it now. */
    OSErr Delete();
    /** Leaves it where it is, for the next purge. */
    void Leave();

private:
    OSErr CreateIn(FSCreateType createType, const CFileRef& temp, std::string_view suffix);
    [[nodiscard]] OSErr Hold(FileAccess access);

    CFileRef i_item, i_grandParent;
    CDataFork i_hold;
};
