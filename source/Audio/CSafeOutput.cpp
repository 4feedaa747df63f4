#include "Audio/CSafeOutput.h"

OSErr CSafeOutput::Start() {
    if (i_fork.IsOpen()) return opWrErr;
    i_written = i_file;
    i_saveP = std::make_unique<CSafeSave>(i_written);
    OSErr err = i_saveP->Start(SaveMode::kNew);
    if (!Failed(err)) err = i_fork.Open(i_written, FileAccess::kCreate);
    if (!Failed(err)) err = i_fork.SetEOF(CDataFork::PosMode::kFromStart, 0);
    if (Failed(err)) Abandon();
    return err;
}

OSErr CSafeOutput::Patch(std::uint64_t at, std::span<const std::byte> bytes) {
    const auto backL = static_cast<std::int64_t>(i_fork.GetPos());
    OSErr err = i_fork.SetPos(CDataFork::PosMode::kFromStart, static_cast<std::int64_t>(at));
    if (!Failed(err)) err = i_fork.Write(bytes);
    return FirstOf(err, i_fork.SetPos(CDataFork::PosMode::kFromStart, backL));
}

OSErr CSafeOutput::Finish() {
    if (!i_saveP) return paramErr;
    OSErr err = i_fork.Close();
    if (!Failed(err)) err = i_saveP->Finish();
    i_saveP.reset();
    return err;
}

void CSafeOutput::Abandon() {
    if (i_fork.IsOpen() && Failed(i_fork.Close())) {
    }   // what it holds is not wanted
    i_saveP.reset();
}
