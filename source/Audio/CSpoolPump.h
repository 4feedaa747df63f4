#pragma once

#include "Audio/CSpooler.h"

/** Moves a source into a destination: opens both, carries chunk after chunk through one fixed buffer, closes both. A
    ring as destination keeps it until the reader has closed, so that a song can be sought after its last block was
    read.
    Threads  made on any; Run once, on the thread that it keeps busy. On a cooperative one it takes small chunks and
             gives up the processor every 5 ms.
    Owner    retains both spools. A pump that is destroyed without having run lets everybody go who waits for it.
    Errors   kept in the spools, and the result of Run. An end of the file is none, unless the destination is a series
             of files or the source a disc image, whose writers ask for it. */
class CSpoolPump {
public:
    CSpoolPump(Ref<CSpooler> sourceP, Ref<CSpooler> destinationP);
    ~CSpoolPump();
    CSpoolPump(const CSpoolPump&) = delete;
    CSpoolPump& operator=(const CSpoolPump&) = delete;

    OSErr Run();
    /** What the destination's first write is waited for by. */
    [[nodiscard]] long FirstWrite() const noexcept { return i_firstWriteL; }

    /** The application quits: every pump is aborted, and one that is made from now on is aborted at once. Any thread. */
    static void AbortAll();
    /** The application starts. */
    static void AllowAll() noexcept;
    [[nodiscard]] static bool IsEnding() noexcept;

private:
    struct Register;
    static Register& Pumps();
    OSErr Pump();
    OSErr Loop();
    OSErr AtEndOfFile(bool& goOnB);
    OSErr SourceFailed(OSErr err);
    void TellDestination(OSErr err);
    void Leave(OSErr err);

    const Ref<CSpooler> i_sourceP;
    const Ref<CSpooler> i_destinationP;
    long i_firstWriteL = 0;   // at the gate of the destination
    bool i_leftB = false;
    bool i_playsOutB = false;   // the destination keeps a failure of the source for the end of what it holds
};
