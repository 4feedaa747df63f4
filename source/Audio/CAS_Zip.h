#pragma once
#include "Audio/CSpooler.h"
#include "Threads/CMutex.h"
#include "Zip/CByteSource_Zip.h"

/** One member of a zip as a source: read in place and unpacked as the reader goes. Can be sought. Sub-code by its
    ending (.cdg, .mcg, .ncg) counts in graphics units, and what lies behind the last whole unit is not seen; all else
    counts in bytes.
    Errors   those of CByteSource_Zip, once the reader has all the bytes before the fault. A wrong checksum at the end
             is a line in the log and no failure: the song was sung by then. */
class CAS_Zip : public CSpooler {
public:
    /** `member` is one that CZipArchive found in `zip`; `source` is told as Source(). */
    CAS_Zip(CFileRef zip, CZipMember member, CCFDictionary source = {});
    OSErr GetEOF(std::uint64_t& sizeL) override;

protected:
    OSErr Open_i(bool writeB, std::uint64_t& sizeL) override;
    OSErr Close_i(bool writeB) override;
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override;
    std::uint64_t Available_i() override;
    OSErr Seek_i(std::uint64_t positionL) override;
    void Abort_i() override;

private:
    const CFileRef i_zip;
    const CZipMember i_member;
    CMutexT<std::shared_ptr<CByteSource_Zip>>
        i_bytesP;   // while it is open; for Abort_i, else used under the read lock
};
