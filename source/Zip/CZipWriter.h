#pragma once
#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

#include "Files/CFileRef.h"

/** Packs files into a new zip: deflate, names in UTF-8, 64-bit records where they are needed. One that was not closed
    with noErr leaves no file behind.
    Units    bytes of the files that go in.
    Threads  one, a worker; Abort and DoneBytes from any.
    Errors   the first failure stays and is answered by every later call; dskFulErr when the disk is full, abortErr
             after Abort. A call that failed at the system leaves its line in the log. */
class CZipWriter {
public:
    enum class Effort : bool { kUsual, kFast };   // kFast: a third of the time, some more bytes

    explicit CZipWriter(Effort effort = Effort::kUsual);
    ~CZipWriter();
    CZipWriter(const CZipWriter&) = delete;
    CZipWriter& operator=(const CZipWriter&) = delete;

    /** dupFNErr when anything of the name is there. */
    OSErr Open(const CFileRef& zip);
    /** The whole of `file` as a member named `name`: UTF-8, parts with "/" between them. paramErr for a name that is no
        such thing or would climb out. */
    OSErr Add(const CFileRef& file, std::string_view name);
    /** The directory, then everything down to the disc. */
    OSErr Close();

    /** Ends Add within 64 KB. */
    void Abort() noexcept { i_abortB.store(true, std::memory_order_relaxed); }
    /** Read so far, of all files together: the caller knows their sizes. */
    [[nodiscard]] std::uint64_t DoneBytes() const noexcept { return i_doneL.load(std::memory_order_relaxed); }

private:
    struct Zip_;   // minizip's side
    OSErr Pack(class CDataFork& from);
    OSErr Fail(OSErr err);

    std::unique_ptr<Zip_> i_zipP;   // while it is open
    const Effort i_effort;
    CFileRef i_file;
    OSErr i_err = noErr;
    std::atomic<bool> i_abortB{false};
    std::atomic<std::uint64_t> i_doneL{0};
};
