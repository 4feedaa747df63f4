#pragma once
#include <memory>

#include "Threads/CT_Preemptive.h"

class CMoviePlay;

/** The thread on which a movie's pictures are made, until that is stopped. */
class CT_MovieDecode final : public CT_Preemptive {
public:
    explicit CT_MovieDecode(std::shared_ptr<CMoviePlay> playP)
        : CT_Preemptive("movie decode"), i_playP(std::move(playP)) {}

protected:
    OSErr Operate(OSErr err) override;

private:
    std::shared_ptr<CMoviePlay> i_playP;
};
