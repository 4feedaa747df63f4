#pragma once
#include <memory>

#include "Audio/CSafeOutput.h"
#include "Audio/CSpooler.h"

/** The bytes of a file as they are: raw sound, sub-code, a bin image. Can be read and written at once; what is written
    takes the file's name when the spool is closed without an error, and a reader has what was there before.
    Units    4 bytes for sub-code, else 2, as `unitBytes` says.
    Errors   a file that cannot be opened is told to the user. */
class CAS_File : public CSpooler {
public:
    explicit CAS_File(const CFileRef& file, SpoolType type = SpoolType::kAudio,
                      std::size_t unitBytes = kSpool_AudioUnitBytes);

    /** Before it is opened: the drive's offset of the sound against the sub-code, in bytes, whole frames. The reader
        begins so much later in the file, or with so much silence. paramErr for a part of a frame. */
    OSErr SetSyncOffset(std::int64_t bytes);
    OSErr GetEOF(std::uint64_t& sizeL) override;
    /** "BIN File", "Audio File" and so on. */
    [[nodiscard]] static const char* NameOf(SpoolType type) noexcept;

protected:
    OSErr Open_i(bool writeB, std::uint64_t& sizeL) override;
    OSErr Close_i(bool writeB) override;
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override;
    OSErr Write_i(std::span<const std::byte> bytes) override;
    std::uint64_t Available_i() override;
    OSErr Seek_i(std::uint64_t positionL) override;

private:
    OSErr OpenForWrite();
    OSErr OpenForRead(std::uint64_t& sizeL);
    OSErr TellOpen(OSErr err, const char* stepZ) const;
    [[nodiscard]] std::uint64_t Bytes(std::uint64_t eof) const noexcept;

    const CFileRef i_file;
    // All under the data lock.
    std::int64_t i_offsetL = 0;   // bytes of the file before the first of the spool; negative: silence
    std::uint64_t i_bytesL = 0;   // of the reader, with the offset
    std::uint64_t i_atL = 0;      // bytes; never above i_bytesL
    CDataFork i_fork;
    CSafeOutput i_out;
    OSErr i_writeErr = noErr;   // the first failure
};
