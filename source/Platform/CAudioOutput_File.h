#pragma once
#include <filesystem>

#include "Platform/CAudioOutput_Paced.h"

/** The sound in a file without a header, 16-bit little-endian stereo, at the pace of CClock, so that everything that
    goes with the sound runs as it does in a show. The first Open empties the file, later ones append: one file a night.
    Frames are written once a device would have taken them, by Queue and Close: not for a disc that stalls.
    Errors   Open: the errno of the file. Queue: the same, dskFulErr for a full disc; the file keeps what it has. */
class CAudioOutput_File : public CAudioOutput_Paced {
public:
    /** `speed` times real time; 0: as fast as it is fed. */
    explicit CAudioOutput_File(std::filesystem::path file, double speed = 1.0)
        : CAudioOutput_Paced(speed), i_file(std::move(file)), i_atOnceB(speed == 0) {}
    ~CAudioOutput_File() override;

    OSErr Open(std::string_view device, const AudioBlocks& blocks) override;
    void Close() override;

protected:
    OSErr Deliver(std::span<const std::int16_t> stereo) override;

private:
    /** What is queued, up to this frame since Open. */
    OSErr WriteUpTo(std::uint64_t frameL);
    OSErr Write(std::span<const std::int16_t> stereo);

    const std::filesystem::path i_file;
    const bool i_atOnceB;
    int i_handle = -1;
    bool i_emptiedB = false;
    std::uint64_t i_bytesL = 0;            // of the file
    std::uint64_t i_writtenL = 0;          // frames since Open
    std::vector<std::int16_t> i_waiting;   // queued, and not written; as much as there is room for
    std::vector<std::byte> i_bytes;        // one call of Write, in the file's byte order
};
