#pragma once
#include <cstdint>

#include "Graphics/COffscreen.h"
#include "Movies/MovieOrientation.h"
#include "Platform/OSErr.h"

struct AVFrame;
struct SwsContext;

/** Turns decoded pictures of any form into opaque pixels of depth 32, scaled and upright.
    Threads  one at a time.
    Errors   memFullErr; paramErr: a form that cannot be converted. */
class CMoviePainter {
public:
    explicit CMoviePainter(const MovieOrientation& orientation = {}) : i_orientation(orientation) {}
    ~CMoviePainter();
    CMoviePainter(const CMoviePainter&) = delete;
    CMoviePainter& operator=(const CMoviePainter&) = delete;

    /** `to` gets the size `size`, upright; its memory is kept when it has it already. */
    OSErr Paint(const AVFrame& frame, const PictureSize& size, COffscreen& to);
    [[nodiscard]] const MovieOrientation& Orientation() const noexcept { return i_orientation; }

private:
    struct Form {   // what the context was made for
        int width = 0, height = 0, format = -1;
        PictureSize to;
        int colors = 0;
        bool fullRangeB = false;
        friend bool operator==(const Form&, const Form&) = default;
    };
    OSErr Prepare(const Form& form);
    void Turn(const COffscreen& from, COffscreen& to) const;

    const MovieOrientation i_orientation;
    SwsContext* i_swsP = nullptr;
    Form i_form;
    COffscreen i_lying;   // before it is turned; only for those that are
};
