#pragma once
#include "Platform/OSErr.h"

/** A part of the application: a subsystem as the application has it. A stage of the start makes it, one of the quit
    drops it (AppStages.h); between them it may have an act at other stages, follow preferences (CPreferences::Follow)
    and do what stands here. A part's exception is logged and ends no other part's work.
    Threads  main.
    Owner    CAppParts. */
class CAppPart {
public:
    CAppPart() = default;
    virtual ~CAppPart() = default;
    CAppPart(const CAppPart&) = delete;
    CAppPart& operator=(const CAppPart&) = delete;

    /** The application is ready: what waited for that begins. */
    virtual void Ready() {}
    /** Twice a second, once the application is ready. */
    virtual void Idle() {}
    /** The quit was allowed, and its stages come next: what sounds, or goes on by itself, stops. Told twice, perhaps. */
    virtual void Stop() {}

    /** Something here is not on the disc yet; whoever makes it so calls CApp::SetDirty. */
    [[nodiscard]] virtual bool IsDirty() const { return false; }
    /** Writes what has changed, on a worker; at every save of the application, and it may be that nothing has. A
        failure is told once, tried again in silence, and makes it dirty again. */
    virtual OSErr Save() { return noErr; }
    /** That worker still writes. */
    [[nodiscard]] virtual bool IsSaving() const { return false; }
};
