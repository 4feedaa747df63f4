#pragma once
#include <optional>

#include "App/CAppPart.h"
#include "Core/CBackOff.h"

class CApp;
class CT_Timer;

/** When what has changed is written, of all parts alike: as soon as the user rests for two seconds, and five seconds after
    the first change whether he rests or not. One save at a time, on workers; one back-off for all when something cannot be
    written.
    Threads  main. */
class CAppSaves final : public CAppPart {
public:
    explicit CAppSaves(CApp& app) : i_app(app) {}

    /** Something is not on the disc yet. */
    void NoteChange();
    /** Two seconds without a key or a move of the mouse. */
    void UserRests(CT_Timer& timer);
    /** A change that waits too long for the user's rest is written now. */
    void Idle() override;
    /** Of some part. */
    [[nodiscard]] bool IsAnyDirty() const;
    /** A worker writes, of some part. */
    [[nodiscard]] bool IsWriting() const;
    /** After a save that failed. */
    [[nodiscard]] CBackOff& BackOff() noexcept { return i_backOff; }
    /** The last save of the evening; none may start after it. */
    void SaveLast();

    /** A change is written after so many seconds, at the latest. The writing itself comes on top. */
    static constexpr double kLate_T = 5.0;

private:
    [[nodiscard]] bool MayStart(bool lateB) const;
    void Start();

    CApp& i_app;
    CBackOff i_backOff;
    std::optional<double> i_sinceT;   // the first change that no save has taken yet
};
