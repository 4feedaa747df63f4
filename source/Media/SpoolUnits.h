#pragma once
#include <cstddef>
#include <cstdint>

/** What a spool counts in: 2 bytes of sound (one 16-bit sample; a float sample is two units), 4 bytes of sub-code. */
inline constexpr std::size_t kSpool_AudioUnitBytes = 2;
inline constexpr std::size_t kSpool_GraphicsUnitBytes = 4;
inline constexpr std::size_t kSpool_UnitsPerFrame = 2;    // a stereo frame of 16-bit samples
inline constexpr std::size_t kSpool_UnitsPerPacket = 6;   // a packet of sub-code

inline constexpr std::uint32_t kSamplesPerSecond = 44100;   // frames a second of all sound inside the chains
inline constexpr std::size_t kSamplesAtATime = 9792;        // the most samples that an adapter takes in one call
inline constexpr std::size_t kSpool_ChunkBytes = 9792;      // one transfer of a preemptive pump
inline constexpr std::size_t kSpool_CooperativeChunkBytes = 612;
inline constexpr std::uint32_t kBytesPer300th = 588;   // of 16-bit stereo
inline constexpr std::uint32_t kFramesPer300th = 147;
inline constexpr std::uint64_t kSpool_LowWater = 32 * kSamplesAtATime;    // units in a ring below which it is filled
inline constexpr std::uint64_t kSpool_HighWater = 64 * kSamplesAtATime;   // and above which its writer waits

/** What a spool is, for logs and for the rules that ask. */
enum class SpoolType : std::uint32_t {
    kOther = 0,
    kBin = 1,
    kAudio = 7,
    kVideo = 8,
    kMultiple = 13,
};

/** What the lock of a spool guards. A side without a lock belongs to one thread alone. */
enum class SpoolLock : std::uint32_t {
    kRead = 1,
    kWrite = 2,
    kBoth = 3,
    kReadAndOwnWrite = 4,   // reads; a second lock, which the spool is given, guards writes
};
