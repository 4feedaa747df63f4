#include "Audio/CAS_File.h"

#include <algorithm>

#include "Core/AlertHook.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"

namespace {

constexpr std::int64_t kFile_FrameBytes = kSpool_AudioUnitBytes * kSpool_UnitsPerFrame;
constexpr std::uint64_t kFile_SeekStep = 588;   // units of sound between two places that a seek goes to

SpoolTraits FileTraits(SpoolType type, std::size_t unitBytes) {
    SpoolTraits traits;
    traits.name = CAS_File::NameOf(type);
    traits.type = type;
    traits.unitBytes = unitBytes;
    traits.ownPositionB = true;
    return traits;
}

}   // namespace

const char* CAS_File::NameOf(SpoolType type) noexcept {
    switch (type) {
        case SpoolType::kBin:
            return "BIN File";
        case SpoolType::kAudio:
            return "Audio File";
        case SpoolType::kVideo:
            return "Video File";
        case SpoolType::kMultiple:
            return "Multiple Files";
        case SpoolType::kOther:
            break;
    }
    return "Other File: ";
}

CAS_File::CAS_File(const CFileRef& file, SpoolType type, std::size_t unitBytes)
    : CSpooler(FileTraits(type, unitBytes)), i_file(file), i_out(file) {}

OSErr CAS_File::SetSyncOffset(std::int64_t bytes) {
    if (bytes % kFile_FrameBytes != 0 || bytes <= INT32_MIN || bytes > INT32_MAX) return paramErr;
    const CMutex::Scope guard(*ReadLock());
    i_offsetL = bytes;
    LogF("* Audio Sync offset: %d bytes = %d samples\n", static_cast<int>(bytes),
         static_cast<int>(bytes / kFile_FrameBytes));
    return noErr;
}

std::uint64_t CAS_File::Bytes(std::uint64_t eof) const noexcept {
    if (i_offsetL < 0) return eof + static_cast<std::uint64_t>(-i_offsetL);
    return eof - std::min(eof, static_cast<std::uint64_t>(i_offsetL));
}

OSErr CAS_File::GetEOF(std::uint64_t& sizeL) {
    sizeL = 0;
    CDataFork fork;
    std::uint64_t eof = 0;
    OSErr err = fork.Open(i_file, FileAccess::kRead);
    if (!Failed(err)) err = fork.GetEOF(eof);
    const CMutex::Scope guard(*ReadLock());
    if (!Failed(err)) sizeL = Bytes(eof) / UnitBytes();
    return err;
}

OSErr CAS_File::TellOpen(OSErr err, const char* stepZ) const {
    if (!Failed(err)) {
        Log("Success opening file spool");
        return noErr;
    }
    LogF("### Error %s: %s", stepZ, ErrorText(err).c_str());
    LogF("The file was: %s\r", i_file.GetPath().c_str());
    LogF("File spool open result: %d", Number(err));
    ShowAlert(Localize("bummer"), Localize("File spooler open error") + "\n" + FaultText(err, i_file.GetPath()));
    return alreadyReportedErr;
}

OSErr CAS_File::Open_i(bool writeB, std::uint64_t& sizeL) { return writeB ? OpenForWrite() : OpenForRead(sizeL); }

OSErr CAS_File::OpenForWrite() {
    i_writeErr = noErr;
    return TellOpen(i_out.Start(), "opening file for writing");   // it begins empty
}

OSErr CAS_File::OpenForRead(std::uint64_t& sizeL) {
    i_atL = i_bytesL = 0;
    if (const OSErr err = i_fork.Open(i_file, FileAccess::kRead); Failed(err))
        return TellOpen(err, "opening file for reading");
    std::uint64_t eof = 0;
    if (const OSErr err = i_fork.GetEOF(eof); Failed(err)) {
        if (Failed(i_fork.Close())) Log("### Error closing file spool");
        return TellOpen(err, "getting EOF");
    }
    i_bytesL = Bytes(eof);
    sizeL = i_bytesL / UnitBytes();
    return TellOpen(noErr, "");
}

OSErr CAS_File::Close_i(bool writeB) {
    OSErr err = noErr;
    if (!writeB) {
        if (i_fork.IsOpen()) err = i_fork.Close();
    } else if (i_out.IsOpen()) {
        err = FirstOf(i_writeErr, Err());
        if (!Failed(err)) err = i_out.Finish();
        if (Failed(err)) i_out.Abandon();
    }
    if (Failed(err) && !IsIgnorable(err)) LogF("### Error closing file spool: %s", ErrorText(err).c_str());
    return err;
}

std::uint64_t CAS_File::Available_i() { return (i_bytesL - i_atL) / UnitBytes(); }

OSErr CAS_File::Read_i(std::span<std::byte> buffer, std::size_t& gotL) {
    gotL = 0;
    const std::uint64_t silenceL = i_offsetL < 0 ? static_cast<std::uint64_t>(-i_offsetL) : 0;
    if (i_atL < silenceL) {
        gotL = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), silenceL - i_atL));
        std::ranges::fill(buffer.first(gotL), std::byte{0});
        i_atL += gotL;
        return noErr;
    }
    const std::int64_t placeL = static_cast<std::int64_t>(i_atL) + i_offsetL;
    OSErr err = i_fork.GetPos() == static_cast<std::uint64_t>(placeL)
                    ? noErr
                    : i_fork.SetPos(CDataFork::PosMode::kFromStart, placeL);
    if (!Failed(err)) err = i_fork.Read(buffer, gotL);
    gotL -= gotL % UnitBytes();
    i_atL += gotL;
    if (!Failed(err)) return noErr;
    if (err == eofErr) {   // somebody made it shorter meanwhile
        Log("End Of File: reading from spool file");
        i_bytesL = i_atL;
        return err;
    }
    return LogStep(err, "reading from spool file", i_file.GetPath());
}

OSErr CAS_File::Write_i(std::span<const std::byte> bytes) {
    const std::uint64_t beforeL = i_out.Fork().GetPos();
    OSErr err = i_out.Write(bytes);
    if (Failed(err)) {
        LogF("### Error writing to file: %s", ErrorText(err).c_str());
    } else if (i_out.Fork().GetPos() - beforeL != bytes.size()) {
        Log("### Error data size mismatch writing file");
        err = ioErr;
    }
    if (!Failed(err)) return noErr;
    LogF("File spool write result: %d\n", Number(err));
    i_writeErr = FirstOf(i_writeErr, err);
    return err;
}

OSErr CAS_File::Seek_i(std::uint64_t positionL) {
    if (Type() == SpoolType::kAudio) {
        const std::uint64_t restL = positionL % kFile_SeekStep;
        if (restL != 0) LogF("seeking file spool: %d units before the place", static_cast<int>(restL));
        positionL -= restL;
    }
    i_atL = std::min(positionL, i_bytesL / UnitBytes()) * UnitBytes();
    SetRead(i_atL / UnitBytes());
    return noErr;
}
