#pragma once
#include <memory>
#include <string>

#include "Files/CDataFork.h"
#include "Files/CSafeSave.h"
#include "Storage/SongRecord.h"

/** Writes "Songs.vlb" by a safe save: the file holds all of the old or all of the new songs. A writer that ends before
    Finish, or after a failure, leaves the old file.
    Threads  one: the worker that saves.
    Errors   the first one is kept and nothing more is written; each has its log line, nothing is shown. */
class CSongFileWriter {
public:
    /** `songsL` must be the number of Add calls; `flags` as in the header. */
    OSErr Start(const CFileRef& file, std::uint32_t songsL, std::uint8_t flags = 0);
    /** paramErr for the id 0, which would end the file, and for a text of a gigabyte. */
    OSErr Add(const SongRecord& record);
    /** One of the songs that Start was told of is not there any more. */
    void Skip();
    /** paramErr when the number of songs is not what Start was told: the old file stays. */
    OSErr Finish();

private:
    OSErr Fail(OSErr err, const char* stepZ);
    OSErr WriteHeader();
    OSErr Flush(std::size_t keepL, const char* stepZ);

    CFileRef i_file;
    std::unique_ptr<CSafeSave> i_saveP;
    CDataFork i_fork;   // after i_saveP: closed before the safe file is taken away
    std::string i_buffer;
    SongFileHeader i_header;
    std::uint32_t i_leftL = 0;
    bool i_skippedB = false;
    OSErr i_err = paramErr;   // until Start
};
