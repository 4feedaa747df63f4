#pragma once
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "Files/CFileRef.h"
#include "Files/CTempItem.h"

enum class SaveMode : unsigned char {
    kNew,    // the caller writes all of the file anew
    kCopy,   // the caller changes a copy of the old contents
};

/** Replaces a file so that at each moment its name holds all of the old or all of the new. Start puts a temporary file
    in the caller's reference; the caller writes there and closes; Finish brings it to the disc and renames it over the
    original. A save that is not finished leaves the original, and its destruction takes the temporary away.
    Threads  one, that saves; library saves run on tasks with "No Kill" in their name.
    Owner    the saving function; the reference outlives it.
    Errors   statuses, each with its log line; nothing is shown (see TellSaveError). After a failed replacement the new
             data stay in the safe file, named in the log, until the next purge or failure for this file. */
class CSafeSave {
public:
    explicit CSafeSave(CFileRef& file) : i_file(file) {}
    ~CSafeSave();
    CSafeSave(const CSafeSave&) = delete;
    CSafeSave& operator=(const CSafeSave&) = delete;

    /** SafeSaveStart. On failure nothing may be written: the reference still names the original. fLckdErr for a file
        that nobody may write, EISDIR for a folder. */
    OSErr Start(SaveMode mode);
    /** SafeSaveFinish. On success the reference names the final file, on failure the original. */
    OSErr Finish();
    /** False for a file in a temporary place: it is written as it stands. */
    [[nodiscard]] bool IsActive() const { return i_activeB; }

private:
    OSErr StartIn(SaveMode mode);
    OSErr LookAtOriginal(SaveMode mode);
    OSErr MakeSafeFile(SaveMode mode);
    OSErr Recover();
    OSErr ReplaceObject();
    void Cleanup();
    void KeepSafeFile();

    CFileRef& i_file;
    CFileRef i_origFile, i_safeFile;
    CTempItem i_parent;   // the folder made for the safe file
    std::string i_name, i_tempName;
    std::uint32_t i_mode = 0;   // permission bits of the original; 0: there was none
    bool i_activeB = false, i_copyB = false;
    bool i_replacedB = false;   // the new file has the name
};

/** `file` afterwards holds all of `bytes`, or is untouched. dskFulErr when the disk is full. Logs
    "### Error safe save start" and its kin. Never shows anything. A task that does this is named `kSaveTask_Name`. */
OSErr SafeSave(const CFileRef& file, std::span<const std::byte> bytes);
OSErr SafeSave(const CFileRef& file, std::string_view bytes);
/** The same for a whole property list: `toXML` makes the bytes; its failure is "### Error creating xml data". */
OSErr SafeSavePropertyList(const CFileRef& file, const std::function<OSErr(std::string& xml)>& toXML);
inline constexpr std::string_view kSaveTask_Name = "No Kill: saving plist";

/** At the edge: shows "There was an error saving the file “name”" once, unless `err` is success, already reported or
    wished for; returns alreadyReportedErr after showing, else `err`. */
OSErr TellSaveError(OSErr err, const CFileRef& file);
