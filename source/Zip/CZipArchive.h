#pragma once
#include <memory>
#include <vector>

#include "Files/CByteSource.h"
#include "Files/CFileRef.h"
#include "Zip/CZipMember.h"

/** The members of a zip. Reads the directory when it is opened and holds no file open afterwards: each member that is
   read has a source of its own (CByteSource_Zip), so that the sound and the graphics of a song are read on two threads.
    Threads  Open on one; what is told afterwards is fixed and may be read by any.
    Errors   a status, with Fault() for the reason and one line in the log. A zip with a broken directory is read by the
             headers in front of its members, which the log says.
    Source   .ZIP File Format Specification (APPNOTE.TXT), 4.3. */
class CZipArchive {
public:
    OSErr Open(const CFileRef& file);
    /** The same for bytes that lie elsewhere. `source` is not kept. */
    OSErr Open(CByteSource& source);

    [[nodiscard]] const CFileRef& File() const { return i_file; }
    [[nodiscard]] const std::vector<CZipMember>& Members() const { return i_members; }
    [[nodiscard]] ZipFault Fault() const { return i_fault; }
    /** Read by the headers of the members: names and sizes are less sure, and what lay behind the damage may be
        missing. */
    [[nodiscard]] bool IsRepaired() const { return i_repairedB; }

private:
    CFileRef i_file;
    std::vector<CZipMember> i_members;
    ZipFault i_fault = ZipFault::kNone;
    bool i_repairedB = false;
};
