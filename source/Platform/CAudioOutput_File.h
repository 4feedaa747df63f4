#pragma once
#include <filesystem>

#include "Platform/CAudioOutput_Paced.h"

/** The sound in a file without a header, 16-bit little-endian stereo, at the pace of CClock, so that everything that
    goes with the sound runs as it does in a show. The first Open empties the file, later ones append: one file a night.
    Queue writes: not for a disc that stalls.
    Errors   Open: the errno of the file. Queue: the same, dskFulErr for a full disc; the file keeps what it has. */
class CAudioOutput_File final : public CAudioOutput_Paced {
public:
    /** `speed` times real time; 0: as fast as it is fed. */
    explicit CAudioOutput_File(std::filesystem::path file, double speed = 1.0)
        : CAudioOutput_Paced(speed), i_file(std::move(file)) {}
    ~CAudioOutput_File() override;

    OSErr Open(std::string_view device, const AudioBlocks& blocks) override;
    void Close() override;

protected:
    OSErr Deliver(std::span<const std::int16_t> stereo) override;

private:
    const std::filesystem::path i_file;
    int i_handle = -1;
    bool i_emptiedB = false;
    std::uint64_t i_bytesL = 0;
    std::vector<std::byte> i_bytes;   // one call of Queue, in the file's byte order
};
