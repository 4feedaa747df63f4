#pragma once

/** When what failed is tried again: after 2 s, then later and later, but soon enough that what waits is written within ten
    seconds of the moment when it can be.
    Units    seconds of CClock::SteadyT.
    Threads  one. */
class CBackOff {
public:
    /** Nothing failed, or the time has come to try again. */
    [[nodiscard]] bool IsOver() const;
    void NoteFailure();
    void NoteSuccess() { i_againAtT = i_waitT = 0; }

private:
    double i_againAtT = 0, i_waitT = 0;
};
