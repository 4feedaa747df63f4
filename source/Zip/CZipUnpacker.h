#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

/** The ways to pack that are read here. */
enum class ZipMethod : std::uint16_t { kStored = 0, kDeflate = 8, kDeflate64 = 9 };

/** Unpacks the data of one member, piece by piece, and can be saved at any byte.
    Threads  one at a time.
    Errors   kBad, which stays. */
class CZipUnpacker {
public:
    enum class Status : unsigned char { kMore, kEnd, kBad };
    struct Step {
        Status status = Status::kMore;
        std::size_t takenL = 0, givenL = 0;   // both 0 with kMore: there must be more input, or more room
    };
    CZipUnpacker() = default;
    virtual ~CZipUnpacker() = default;
    CZipUnpacker& operator=(const CZipUnpacker&) = delete;

    virtual Step Run(std::span<const std::byte> in, std::span<std::byte> out) = 0;
    /** The same state again, to go on from later; null when there is no memory for it. */
    [[nodiscard]] virtual std::unique_ptr<CZipUnpacker> Clone() const = 0;

    /** For the start of a member. Null for a method that is not known, stored among them, and without memory. */
    [[nodiscard]] static std::unique_ptr<CZipUnpacker> Make(std::uint16_t method);
    /** The most that `packed` bytes can become: what a directory tells beyond it is not true. */
    [[nodiscard]] static std::uint64_t MostUnpacked(std::uint16_t method, std::uint64_t packed) noexcept;

protected:
    CZipUnpacker(const CZipUnpacker&) = default;
};
