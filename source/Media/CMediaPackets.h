#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Media/CMediaFormat.h"

struct AVCodecParameters;
struct AVPacket;
struct AVRational;

/** One packet of the sound, as the table keeps it. Counts are samples of one channel at the decoder's rate. */
struct MediaPacketRow {
    std::int64_t placeL = -1;   // in the file; -1: `heldP` has the bytes
    std::uint32_t sizeL = 0;
    std::uint32_t toldL = 0;    // what the demuxer says of its length; 0: nothing
    std::uint32_t leadL = 0;    // samples cut off its front (encoder delay)
    std::uint32_t countL = 0;   // samples that are heard, and silence for packets that are missing after it
    bool countedB = false;      // leadL and countL are known
    bool failedB = false;       // did not decode; silence stands for it
    std::uint64_t startL = 0;   // samples heard before it
    std::shared_ptr<AVPacket> heldP;
};

/** The sound's packets in the order of the file, each of which can be had again exactly: demuxers find their way back
    by time, which is a guess in many formats, so the way forth is written down instead. Packets that lie in one piece
    in the file are kept as places, others are held as they are, up to kMediaPackets_MostHeld bytes. FLAC alone tells in
    each packet which samples it has: there the table may begin anew anywhere (Land).
    Threads  one at a time; Abort any.
    Owner    CMediaAudio.
    Errors   statuses. paramErr: no sound that we can read. */
class CMediaPackets {
public:
    CMediaPackets() = default;
    CMediaPackets(const CMediaPackets&) = delete;
    CMediaPackets& operator=(const CMediaPackets&) = delete;

    /** `extension` without its dot helps where the contents are no sure sign; "pcm" and "raw" are 16-bit stereo. What
        is read until EndOpening is bounded. */
    OSErr Open(CByteSource& source, std::string_view extension);
    /** False when the bound was met: what looked like the end was none. */
    bool EndOpening() noexcept { return i_format.EndOpening(); }
    /** The packet at Position, which moves on. eofErr after the last one; ioErr, abortErr. */
    OSErr Next(AVPacket& packet);
    [[nodiscard]] std::size_t Position() const noexcept { return i_positionL; }
    /** To a packet of the table, or to its end. */
    void GoTo(std::size_t number) noexcept { i_positionL = number; }
    /** Reads the file anew from its first packet, with an empty table. */
    OSErr Restart();

    /** The packet that holds a sample may be found without those before it. */
    [[nodiscard]] bool MayLand() const;
    /** The table begins anew with the packet that holds `sample`, or one before it. Where what the file says does not
        hold together, it begins at the start of the file, once and for all; no table is left when that fails too. */
    void Land(std::uint64_t sample);
    /** From now on only what was read from the start of the file counts. */
    void StopLanding();
    /** Samples before the table. */
    [[nodiscard]] std::uint64_t Begin() const noexcept { return i_rows.empty() ? 0 : i_rows.front().startL; }

    /** The sample with which `packet`, fresh from the file, says that it begins; -1 where that is no sure thing. */
    [[nodiscard]] std::int64_t TellsStart(const AVPacket& packet) const;

    /** Those met so far, while the table is kept. */
    [[nodiscard]] std::vector<MediaPacketRow>& Rows() noexcept { return i_rows; }
    [[nodiscard]] bool HasTable() const noexcept { return i_tableB; }
    void DropTable();

    [[nodiscard]] const AVCodecParameters& Parameters() const;
    [[nodiscard]] AVRational TimeBase() const;
    [[nodiscard]] const std::string& Container() const noexcept { return i_format.Container(); }
    /** 0 when nothing tells. */
    [[nodiscard]] double Seconds() const { return i_format.Seconds(); }
    void Abort() noexcept { i_format.Abort(); }
    [[nodiscard]] bool IsAborted() const noexcept { return i_format.IsAborted(); }

    static constexpr std::size_t kMediaPackets_MostHeld = 64U << 20;
    static constexpr std::size_t kMediaPackets_MostRows = 1U << 20;   // 7 hours of MP3

private:
    enum class Landing { kUntried, kExact, kNever };

    OSErr BeginTable(OSErr opened);
    [[nodiscard]] bool TellsSamples() const;
    bool SendTo(std::uint64_t sample);
    bool EndsAsTold();
    OSErr ReadFromFile(AVPacket& packet);
    OSErr ReadFromTable(const MediaPacketRow& row, AVPacket& packet);
    void Note(const AVPacket& packet);
    void NotePlace(const AVPacket& packet, MediaPacketRow& row);
    [[nodiscard]] bool LiesThere(const AVPacket& packet);
    [[nodiscard]] bool Hold(const AVPacket& packet, MediaPacketRow& row);

    CMediaFormat i_format{MediaKind::kSound};
    std::vector<MediaPacketRow> i_rows;
    std::size_t i_positionL = 0, i_heldL = 0;
    std::shared_ptr<AVPacket> i_lastP;   // the newest row's, until the one after it lies where it should
    bool i_tableB = true, i_placesB = false, i_withoutGapsB = false;
    Landing i_landing = Landing::kUntried;
};
