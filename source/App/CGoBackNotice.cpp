#include "App/CGoBackNotice.h"

#include "Meta/TimeCode.h"
#include "Platform/CClock.h"
#include "Play/CPlayControl.h"

CGoBackNotice::CGoBackNotice(CPlayControl& play, CNotices& notices) : i_play(play), i_notices(notices) {
    i_play.AddWatcher(*this);
}

CGoBackNotice::~CGoBackNotice() {
    i_play.RemoveWatcher(*this);
    i_notices.Withdraw(i_offer);   // its button calls a control that goes
}

void CGoBackNotice::GoBackChanged() {
    i_notices.Withdraw(i_offer);
    const std::optional<GoBackOffer> offer = i_play.InterruptedSong();
    if (!offer) return;
    const std::string place = DurationOf300ths(offer->place300).UTF8();
    // The control tells when the time is over; should it be late, the notice ends by itself.
    i_offer = i_notices.Offer({.label = "Go Back to " + offer->name + ", " + place,
                               .act = [this] { (void)i_play.GoBack(); }},   // tells its own failure
                              CClock::Get().SteadyT() + CInterruptedSong::kKept_T);
}
