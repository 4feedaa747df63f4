#pragma once
#include <memory>

#include "Graphics/CGraphicsClock.h"
#include "Graphics/CGraphicsSong.h"
#include "Platform/CClock.h"
#include "Play/CPlayPace.h"
#include "Play/SongPlayParts.h"

class CGraphics;
class CGraphicsPorts;
class CSongMovie;
class CT_DriftFree_Graphics;

/** What the picture asks of the song that it belongs to. */
class CSongPictureOwner {
public:
    virtual ~CSongPictureOwner() = default;
    [[nodiscard]] virtual bool IsSoundOver() const = 0;
    [[nodiscard]] virtual bool IsEnding() const = 0;
    /** Picture and sound are over; told once. */
    virtual void PictureEnded() = 0;
    virtual void PictureFailed(OSErr err) = 0;
};

/** The picture of one play of a song, and the song's clock, which runs without a picture too.
    Units    300ths of the song.
    Threads  main; the clock is led by CT_DriftFree_Graphics.
    Owner    CSongPlay, which outlives it. */
class CSongPicture final : private CGraphicsSong {
public:
    CSongPicture(const SongPlayParts& parts, CSongPictureOwner& owner);
    ~CSongPicture() override;
    CSongPicture(const CSongPicture&) = delete;
    CSongPicture& operator=(const CSongPicture&) = delete;

    /** Planes, decoder, and their place on the screens, when the song has graphics. memFullErr. */
    OSErr WireUp(CGraphicsPorts& ports);
    /** The clock stands at `start300`; null: a song without sound. */
    OSErr StartClock(long start300, double tempo, std::shared_ptr<const CHeardSound> soundP);
    void StopClock();
    /** Planes and decoder go, and leave the screens. */
    void TakeDown();

    [[nodiscard]] CPlayPace* Pace() const noexcept { return i_paceP.get(); }
    /** The picture of `time300`: the packets before it, from the start when that is a way back. */
    void SeekTo300(long time300);
    void SetPaused(bool pausedB);
    [[nodiscard]] bool IsPaused() const override { return i_pausedB; }
    /** The song's own slip, in seconds. */
    void SetSlipT(double seconds);
    /** How much later than the sound it is shown, in milliseconds. */
    void SetDelay(long milliseconds);
    void Tick(bool forceB);

    [[nodiscard]] long Time300() const noexcept { return static_cast<long>(i_clock.Now()); }
    /** Packets that were drawn. */
    [[nodiscard]] long Packets() const;
    /** What became of the pictures of a video song. */
    [[nodiscard]] MovieCounts Pictures() const;
    /** Until the last packet that draws, or the end of the movie, with the slip; 0 without a picture. */
    [[nodiscard]] long End300() const;
    [[nodiscard]] const CGraphics* Graphics() const noexcept { return i_graphicsP.get(); }

private:
    std::string Name() const override { return i_parts.spec.name; }
    CGraphicsClock& Clock() override { return i_clock; }
    CSubCodeStream* Stream() override { return i_parts.loadP->Graphics(); }
    bool IsAtEnd() const override;
    bool IsAudioFinished() const override;
    bool IsVideoSong() const override { return i_parts.loadP->Kind() == SongKind::kVideo; }
    CGraphicsMovie* Movie() override { return i_parts.loadP->Movie().Get(); }
    std::uint16_t ChannelMask() const override { return i_parts.spec.channels; }
    long SyncSlip300() const override;
    [[nodiscard]] long Lead300() const;
    bool IsChangingSong() const override { return i_owner.IsEnding(); }
    bool IsQuitting() const override { return i_owner.IsEnding() || i_parts.show->quittingB; }
    void PostPlayNext() override { i_owner.PictureEnded(); }
    void DeferPlayNext() override {}   // there is no next song after the quit
    void StopAfter(OSErr err) override { i_owner.PictureFailed(err); }
    void NoteDrawn(double) override { i_parts.show->drawnT = CClock::Get().SteadyT(); }

    void Rewind();

    const SongPlayParts& i_parts;
    CSongPictureOwner& i_owner;
    CGraphicsClock i_clock;
    std::unique_ptr<CGraphics> i_graphicsP;
    std::unique_ptr<CSongMovie> i_movieP;   // of a video song; uses the graphics
    std::shared_ptr<CPlayPace> i_paceP;
    CT_DriftFree_Graphics* i_threadP = nullptr;   // the fork's; lives until it was told to stop
    bool i_pausedB = true;
    bool i_endToldB = false;   // of a song without graphics
    double i_slipT = 0;        // seconds; the clock starts with it
    long i_slipMoved300 = 0;   // since the start
    long i_delayL = 0;         // milliseconds
};
