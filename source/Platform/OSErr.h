#pragma once
/** The status that every failing call answers: the short numbers of the file manager, 0 for none.
    A positive value is an `errno` of the system. -1 was already told to the user; -27 and -128 were wished for. */
enum class [[nodiscard]] OSErr : short{
    noErr = 0,
    alreadyReportedErr = -1,
    queueNotDoneErr = -16,   // a queue element that will finish itself later
    controlErr = -17,
    abortErr = -27,
    ioErr = -36,
    dskFulErr = -34,
    nsvErr = -35,
    bdNamErr = -37,
    fnOpnErr = -38,
    eofErr = -39,
    memFullErr = -41,
    fnfErr = -43,
    fLckdErr = -45,
    dupFNErr = -48,
    opWrErr = -49,
    paramErr = -50,
    rfNumErr = -51,
    permErr = -54,
    userCanceledErr = -128,
    timerDisposeErr = -613,   // timer: finished, dispose me
    timerKeepErr = -614,      // timer: keep, do not re-arm
    timerRearmErr = -615,     // timer: keep, re-arm
    errFSMissingName = -1411,
    permissionsError = -1423,
    scriptErr = -1753,
    notThreadSafeErr = -2098,
    afpAccessDenied = -5000,
    afpDirNotEmpty = -5007,
    propertyNotFoundErr = -5604,
    invalidMidiErr = -10871,
    semaphoreGoneErr = -29295,       // semaphore without a condition object
    semaphoreTimedOutErr = -29296,   // semaphore wait timed out
    noPathMappingErr = -30101,
    networkTimeoutErr = -30393,
};
using enum OSErr;

[[nodiscard]] constexpr bool Failed(OSErr err) noexcept { return err != noErr; }
/** For a log line or a JSON field. */
[[nodiscard]] constexpr int Number(OSErr err) noexcept { return static_cast<int>(err); }
/** The first failure of two steps that both had to run. */
[[nodiscard]] constexpr OSErr FirstOf(OSErr first, OSErr second) noexcept { return Failed(first) ? first : second; }
