#pragma once
#include <cstdint>
#include <memory>

#include "Media/CMediaPackets.h"

struct AVCodecContext;
struct AVFrame;
struct AVVorbisParseContext;

/** Sound as the decoder gave it, what is not heard cut off. Good until the next call. */
struct MediaPiece {
    const AVFrame* frameP = nullptr;   // null: silence in place of what could not be decoded
    std::size_t fromL = 0;             // first sample of the frame
    std::size_t countL = 0;
};

/** Decodes packets, cuts off the encoder's delay and padding, keeps the time where a packet is damaged, and finds the
    way back to any sample: a packet table with the samples of each packet, a fresh decoder some packets ahead of the
    place, so that what earlier packets left in it is there again.
    Units    samples of one channel at the decoder's rate, counted from the first one that is heard.
    Threads  one at a time.
    Owner    CMediaAudio; the packets outlive it. */
class CMediaFrames {
public:
    explicit CMediaFrames(CMediaPackets& packets);
    ~CMediaFrames();
    CMediaFrames(const CMediaFrames&) = delete;
    CMediaFrames& operator=(const CMediaFrames&) = delete;

    OSErr Open();
    /** eofErr after the last piece. */
    OSErr Next(MediaPiece& piece);

    /** Learns the packets up to `sample` where their lengths can be told without decoding; answers how far GoTo may go
        now. */
    std::uint64_t Reach(std::uint64_t sample);
    /** The next piece begins at `sample`, which is not above Reach. paramErr without a table. */
    OSErr GoTo(std::uint64_t sample);
    /** From the very start; without a table the file is opened anew. */
    OSErr Restart();

    [[nodiscard]] const AVCodecContext& Codec() const { return *i_codecP; }
    [[nodiscard]] std::uint64_t DamagedPackets() const noexcept { return i_damagedL; }

private:
    OSErr OpenCodec();
    OSErr Fetch();
    void Send();
    bool Take(const AVFrame& frame, MediaPiece& piece);
    bool Deliver(const AVFrame* frameP, std::size_t fromL, std::size_t countL, MediaPiece& piece);
    bool CloseRow(MediaPiece& piece);
    void CloseNewRow();
    [[nodiscard]] std::uint32_t Missing(const MediaPacketRow& before) const;
    void DropSilenceAtEnd();
    [[nodiscard]] MediaPacketRow* Row(std::size_t number);
    [[nodiscard]] std::uint32_t Expected(const AVPacket& packet) const;
    void Learn(std::uint32_t rawL);
    std::uint32_t VorbisSamples(std::size_t rowL);
    bool LearnNext();
    [[nodiscard]] std::size_t CountedRows();
    [[nodiscard]] std::size_t PreRoll() const;

    struct Current {   // the packet in the decoder
        std::size_t rowL = 0;
        bool openB = false, knownB = false, failedB = false;
        std::uint32_t expectedL = 0;   // 0: cannot be told
        std::uint32_t rawL = 0;        // decoded so far
        std::uint32_t leadL = 0;       // of those, cut off the front
        std::uint32_t heardL = 0;
    };

    CMediaPackets& i_packets;
    AVCodecContext* i_codecP = nullptr;
    AVFrame* i_frameP = nullptr;
    AVPacket* i_packetP = nullptr;
    Current i_current;
    std::uint32_t i_skipL = 0;            // encoder delay still to be cut off
    std::uint64_t i_silenceL = 0;         // of damaged packets; heard once a good one follows
    std::size_t i_firstRowL = 0;          // those before only warm the decoder
    std::uint64_t i_dropL = 0;            // of the first row, before the place
    std::uint32_t i_packetSamplesL = 0;   // of every packet so far, for codecs where it is one number
    std::shared_ptr<AVVorbisParseContext> i_vorbisP;
    std::size_t i_vorbisRowL = SIZE_MAX;   // the packet that it has seen last
    bool i_variesB = false, i_drainB = false, i_endB = false;
    bool i_heldFrameB = false;   // i_frameP waits behind silence
    bool i_fetchedB = false;     // i_packetP waits for the one before to be closed
    std::size_t i_fetchedL = 0;
    OSErr i_endErr = eofErr;
    std::uint64_t i_damagedL = 0;
};
