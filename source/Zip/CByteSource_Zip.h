#pragma once
#include <atomic>
#include <memory>
#include <vector>

#include "Files/CByteSource.h"
#include "Files/CFileRef.h"
#include "Zip/CZipMember.h"
#include "Zip/CZipUnpacker.h"

/** One member of a zip, read in place: nothing is unpacked to a file or held whole in memory. A packed member keeps
    saved states of its unpacker, at most 24, so that a step back unpacks a small part again (512 KB, or a 24th of a big
    member) and not all from the start.
    Threads  one at a time, Abort any; two members of one zip may be read on two threads, each by a source of its own.
    Owner    its own open file.
    Errors   as CByteSource, abortErr among them; Fault() has the reason, and one line is in the log. Never more than
             the size that the directory tells is given. A member that holds more or less, or, when all of it was read,
             has another checksum, fails at its end, with all the bytes given before. */
class CByteSource_Zip final : public CByteSource {
public:
    /** `member` is one that CZipArchive found in `zip`; it is copied. */
    OSErr Open(const CFileRef& zip, const CZipMember& member);
    /** `source` holds the whole archive. */
    OSErr Open(std::unique_ptr<CByteSource> source, const CZipMember& member);

    OSErr Read(std::span<std::byte> to, std::size_t& got) override;
    OSErr Seek(std::uint64_t position) override;
    [[nodiscard]] std::uint64_t Position() const override { return i_posL; }
    [[nodiscard]] std::uint64_t Size() const override { return i_member.sizeL; }
    [[nodiscard]] std::uint64_t StoredSize() const override;
    [[nodiscard]] std::uint64_t WayTo(std::uint64_t position) const override;
    void Abort() noexcept override { i_abortB.store(true); }
    [[nodiscard]] ZipFault Fault() const { return i_fault; }
    /** Bytes unpacked since Open, those on the way to a place among them: what the seeks really cost. */
    [[nodiscard]] std::uint64_t UnpackedBytes() const { return i_workL; }

private:
    struct Point {
        std::uint64_t at = 0, packedAt = 0;
        std::unique_ptr<CZipUnpacker> state;
    };
    ZipFault ReadHeader();
    ZipFault ReadStored(std::span<std::byte> to, std::size_t& got);
    ZipFault ReadPacked(std::span<std::byte> to, std::size_t& got);
    ZipFault GoTo(std::uint64_t position);
    ZipFault Unpack(std::span<std::byte> to, std::size_t& got);
    ZipFault FillPacked();
    [[nodiscard]] const Point* PointBefore(std::uint64_t position) const;
    [[nodiscard]] bool IsNear(std::uint64_t position, const Point* pointP) const;
    void Restore(std::uint64_t position);
    void SavePoint();
    void Check(std::span<const std::byte> bytes, std::uint64_t at);
    ZipFault CheckEnd();
    OSErr Told(ZipFault fault);

    std::atomic<bool> i_abortB{false};   // looked at before each 32 KB
    CZipMember i_member;
    std::unique_ptr<CByteSource> i_source;
    ZipFault i_fault = ZipFault::kNone;
    bool i_toldB = false;
    std::uint64_t i_dataAt = 0;     // in the file
    std::uint64_t i_posL = 0;       // where the next Read begins
    std::uint64_t i_checkedL = 0;   // bytes from the start that i_crc covers
    std::uint32_t i_crc = 0;

    // Of packed members.
    std::unique_ptr<CZipUnpacker> i_unpacker;   // none before the first read and after a fault
    std::uint64_t i_atL = 0;                    // what it gives next
    std::uint64_t i_packedAtL = 0;              // of the packed bytes: behind those in i_packed
    std::vector<std::byte> i_packed;            // a block of the file
    std::span<const std::byte> i_left;          // of i_packed, not yet taken
    std::vector<Point> i_points;                // by place
    std::uint64_t i_spacingL = 0;
    std::uint64_t i_workL = 0;
};
