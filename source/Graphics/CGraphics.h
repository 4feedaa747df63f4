#pragma once
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Graphics/CCDGDecoder.h"
#include "Graphics/COffscreen.h"
#include "Graphics/CSubChannels.h"
#include "Platform/OSErr.h"

class CGraphicsOverlay;
class CGraphicsPort;
class CGraphicsSong;
class CSubCodeStream;
struct PicturePart;

/** Scales the whole 300 x 216 picture into the 1200 x 864 one; both are locked. */
using GraphicsUpscaler = std::function<OSErr(const CPixels& source, CPixels& dest)>;

/** The picture of one song: pulls packets in step with the song's clock, runs them and shows the result once a tick.
    Units    packets, 1/300 s.
    Threads  the main thread, under the lock of the song.
    Owner    the song that has graphics open; song and upscaler outlive it. It owns the overlay by which its picture is
             shown in ports, and leaves them when it goes.
    Errors   Create answers memFullErr; a failing stream is logged and stops the song by CGraphicsSong. */
class CGraphics {
public:
    /** Packets past the last whole one that a short read counts. */
    static constexpr std::size_t kShortRead_Packets = 4;

    /** `upscaler` empty: the "Use hq4x upscaling (fast computers only)" preference is off. Null and `err` on failure. */
    [[nodiscard]] static std::unique_ptr<CGraphics> Make(std::uint16_t channelMask, GraphicsUpscaler upscaler,
                                                         OSErr& err);

    ~CGraphics();
    /** Once; a second song is a fault. Takes the song's channel mask and makes the overlay, which bears its name. */
    void SetSong(CGraphicsSong& song);
    /** What ports are given to show the picture; null before SetSong. */
    [[nodiscard]] CGraphicsOverlay* Overlay() const { return i_overlay.get(); }

    /** Runs what is due; on the timers "idle timer graphics" and the application's idle routine. */
    void Tick(bool forceB);
    /** The song was sought: its end is to come, and to be reported, again. */
    void ForgetEnd() noexcept { i_endB = false; }
    /** Reads `countL` packets (`packets` has room for kShortRead_Packets more and is zero), corrects them and tells in
        `countL` how many to run. eofErr when nothing came. */
    OSErr ReadSubCodes(CSubCodeStream* streamP, std::span<SubCodePacket> packets, std::size_t& countL);
    /** Reads, corrects and runs `countL` packets through a small buffer, then updates the screen once: a seek over an
        hour takes no more memory than a tick. eofErr when nothing came, else what the stream failed with. */
    OSErr Advance(CSubCodeStream* streamP, std::size_t countL, bool drawB, bool forceB);
    /** Runs corrected packets, then updates the screen once. */
    void ExecutePackets(std::span<const SubCodePacket> packets, bool drawB, bool forceB);
    /** Draws the present picture once into that port alone: what its overlay does in a redraw. */
    void RenderFor(CGraphicsPort& port);
    /** The movie has a new picture, or none any more: every port that shows it refreshes. */
    void MovieChanged();
    /** Black planes, black colours. */
    void Reset(bool drawB);

    [[nodiscard]] const COffscreen& Index() const { return i_index; }
    [[nodiscard]] const COffscreen& TrueColor() const { return i_trueColor; }
    /** What is shown: the movie's picture, the upscaled plane, or the true-colour plane. */
    [[nodiscard]] const CPixels& Picture() const;
    [[nodiscard]] const RGBColor& BorderColor() const { return i_decoder->Colors()[i_decoder->Border()]; }
    [[nodiscard]] const CCDGDecoder& Decoder() const { return *i_decoder; }
    [[nodiscard]] bool IsEndReported() const { return i_endB; }

    CGraphics(const CGraphics&) = delete;
    CGraphics& operator=(const CGraphics&) = delete;

private:
    CGraphics();
    OSErr Create(std::uint16_t channelMask, GraphicsUpscaler upscaler);
    [[nodiscard]] const CPixels* MoviePicture() const;
    void UpdateScreen(bool skipCopyB, bool drawB, bool forceB);
    void RefreshPorts(const std::optional<PicturePart>& part, bool forceB);
    OSErr PullDue(bool forceB);
    void EndOfStream();

    CGraphicsSong* i_songP = nullptr;
    CGraphicsPort* i_portP = nullptr;   // only while RenderFor runs
    GraphicsUpscaler i_upscaler;
    COffscreen i_index, i_scratch;            // depth 4
    COffscreen i_trueColor, i_upscaled;       // depth 32; the second only with an upscaler
    std::unique_ptr<CCDGDecoder> i_decoder;   // over the planes above
    unsigned i_colorsSeed = 0;                // of the table that i_index and i_scratch carry
    std::size_t i_positionL = 0;              // units of the stream that are in the planes
    std::vector<SubCodePacket> i_packets;     // of the present part of a read
    bool i_endB = false;                      // the end was reported

    std::unique_ptr<CGraphicsOverlay> i_overlay;   // goes first: a port must not draw what is half gone

    static unsigned s_block;   // entrants of EndOfStream
};
