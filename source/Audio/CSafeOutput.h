#pragma once
#include <memory>
#include <span>

#include "Files/CDataFork.h"
#include "Files/CSafeSave.h"

/** A file that is written over minutes and takes its name only once it is whole: a failed or stopped encoding leaves
    what was there before.
    Units    bytes.
    Threads  one at a time.
    Owner    the spool that writes. Gone before Finish, it leaves no trace.
    Errors   statuses; the safe save logs its own steps. */
class CSafeOutput {
public:
    explicit CSafeOutput(CFileRef file) : i_file(std::move(file)) {}

    OSErr Start();
    [[nodiscard]] bool IsOpen() const { return i_fork.IsOpen(); }
    [[nodiscard]] CDataFork& Fork() noexcept { return i_fork; }
    OSErr Write(std::span<const std::byte> bytes) { return i_fork.Write(bytes); }
    /** Over what was written before; the position stays. */
    OSErr Patch(std::uint64_t at, std::span<const std::byte> bytes);
    /** Takes the name. */
    OSErr Finish();
    /** Leaves the old file, or none. */
    void Abandon();
    /** The final name, whatever happens. */
    [[nodiscard]] const CFileRef::Path& Path() const noexcept { return i_file.GetPath(); }
    /** Where it is being written, between Start and Finish. */
    [[nodiscard]] const CFileRef& Written() const noexcept { return i_written; }

private:
    const CFileRef i_file;
    CFileRef i_written;                   // where the safe save has it written
    std::unique_ptr<CSafeSave> i_saveP;   // goes before i_written
    CDataFork i_fork;
};
