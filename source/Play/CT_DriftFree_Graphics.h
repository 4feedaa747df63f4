#pragma once
#include <memory>

#include "Play/CPlayPace.h"
#include "Threads/CT_DriftFree.h"

/** The fake clock: a CD sector's four packets of the picture, 75 times a second at tempo 1.0; it rests while the
    picture stands.
    Owner    the fork, as every thread; the song tells it to Stop and takes its clock out of the shared pace. */
class CT_DriftFree_Graphics final : public CT_DriftFree {
public:
    explicit CT_DriftFree_Graphics(std::shared_ptr<CPlayPace> paceP)
        : CT_DriftFree("fake drift free", paceP->Period()), i_paceP(std::move(paceP)) {}

protected:
    bool Tick() override {
        const bool goesB = i_paceP->Tick();
        SetPeriod(i_paceP->Period());
        return goesB;
    }

private:
    const std::shared_ptr<CPlayPace> i_paceP;
};
