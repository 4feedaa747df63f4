#pragma once
#include <optional>
#include <string>
#include <vector>

#include "Graphics/Geometry.h"
#include "Threads/CMutex.h"

class CGraphicsPort;
class CGraphicsSong;

/** One layer of what the singers' screen shows: the picture of a song, a lyric text, a message, the camera. A port owns
    the order of its overlays; an overlay owns what is drawn.
    Threads  made, drawn and destroyed on the main thread; Ports from any.
    Owner    whoever made it. One that goes leaves its ports by itself. */
class CG_Overlay {
public:
    virtual ~CG_Overlay();
    /** The song it belongs to; a port holds the picture of one song alone. */
    [[nodiscard]] virtual CGraphicsSong* Song() const { return nullptr; }
    /** What surrounds it in a port. */
    [[nodiscard]] virtual RGBColor Background() const { return {}; }
    /** Draws into `port`, on top of what is there. The port's stack is locked meanwhile: nothing is added or removed. */
    virtual void Draw(CGraphicsPort& port) = 0;
    /** The rectangle of its content, at 0, 0, when it is another than that of a graphics disc. */
    [[nodiscard]] virtual std::optional<Rect> Frame() const { return {}; }

    /** For the log; the picture of a song begins with "song". */
    [[nodiscard]] const std::string& Name() const noexcept { return i_name; }
    [[nodiscard]] bool IsSongPicture() const noexcept { return i_name.starts_with("song"); }
    /** The ports that show it. */
    [[nodiscard]] std::vector<CGraphicsPort*> Ports() const { return i_portVec.Get(); }

    CG_Overlay(const CG_Overlay&) = delete;
    CG_Overlay& operator=(const CG_Overlay&) = delete;

protected:
    explicit CG_Overlay(std::string name);

private:
    friend class CGraphicsPort;   // writes i_portVec, under its own lock as well: a port's lock comes before an
                                  // overlay's

    const std::string i_name;
    CMutexT<std::vector<CGraphicsPort*>> i_portVec;
};
