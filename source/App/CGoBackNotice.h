#pragma once
#include "App/CNotices.h"
#include "Play/CPlayWatcher.h"

class CPlayControl;

/** Offers the song that was cut off by hand as a notice, as long as it can be had back.
    Threads  main.
    Owner    CApp; goes before the control and the notices. */
class CGoBackNotice final : private CPlayWatcher {
public:
    CGoBackNotice(CPlayControl& play, CNotices& notices);
    ~CGoBackNotice() override;

private:
    void GoBackChanged() override;

    CPlayControl& i_play;
    CNotices& i_notices;
    NoticeID i_offer{0};   // the last one; it may be over
};
