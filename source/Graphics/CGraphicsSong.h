#pragma once
#include <cstdint>
#include <string>

#include "Graphics/CPixels.h"
#include "Platform/OSErr.h"

class CGraphicsClock;
class CSubCodeStream;

/** A video song's movie, as far as its picture goes. */
class CGraphicsMovie {
public:
    virtual ~CGraphicsMovie() = default;
    /** The movie's own picture; null when it draws by itself. */
    [[nodiscard]] virtual const CPixels* Picture() const = 0;
    /** The size in which it is meant to be seen, at 0, 0; another than the picture's where pixels are not square. */
    [[nodiscard]] virtual Rect Frame() const {
        return Picture() == nullptr ? Rect{}
                                    : MakeRect(0, 0, Picture()->bounds().Width(), Picture()->bounds().Height());
    }
    [[nodiscard]] virtual bool IsEnded() const = 0;
    /** True when another picture is shown than before. */
    virtual bool Idle() = 0;
};

/** What the picture asks of its song, and of the application around it.
    Threads  the main thread, under the lock of the song.
    Owner    outlives the CGraphics that it is given to. */
class CGraphicsSong {
public:
    virtual ~CGraphicsSong() = default;

    [[nodiscard]] virtual std::string Name() const = 0;
    [[nodiscard]] virtual CGraphicsClock& Clock() = 0;
    /** Null is a fault of the caller that opened the graphics. */
    [[nodiscard]] virtual CSubCodeStream* Stream() = 0;
    [[nodiscard]] virtual bool IsPaused() const = 0;
    /** The progress between start and end mark has reached 1.0. */
    [[nodiscard]] virtual bool IsAtEnd() const = 0;
    [[nodiscard]] virtual bool IsAudioFinished() const = 0;
    [[nodiscard]] virtual bool IsVideoSong() const = 0;
    [[nodiscard]] virtual CGraphicsMovie* Movie() = 0;   // null for none
    /** Bit n shows channel n; from the song's "Graphic Channels". */
    [[nodiscard]] virtual std::uint16_t ChannelMask() const = 0;
    /** "Global Song Sync Slip (300ths)"; negative delays the picture. */
    [[nodiscard]] virtual long SyncSlip300() const = 0;

    /** The application is busy with a change of song. */
    [[nodiscard]] virtual bool IsChangingSong() const = 0;
    [[nodiscard]] virtual bool IsQuitting() const = 0;
    /** Posts the main-thread call "PlayNext". */
    virtual void PostPlayNext() = 0;
    /** While quitting: raises the database's flag for a next song later. */
    virtual void DeferPlayNext() = 0;
    /** The stream failed (logged already): the database stops the song. */
    virtual void StopAfter(OSErr err) = 0;
    /** A picture was drawn now; the application keeps the time for its idle routine. */
    virtual void NoteDrawn(double absoluteT) = 0;
};
