#include "Platform/CAudioOutput_File.h"

#include <algorithm>
#include <cerrno>

#include "Platform/CFileCalls.h"
#include "Platform/SoundFade.h"

namespace {
OSErr FromErrno(int codeL) { return codeL == ENOSPC ? dskFulErr : static_cast<OSErr>(codeL); }
}   // namespace

CAudioOutput_File::~CAudioOutput_File() { CAudioOutput_File::Close(); }

OSErr CAudioOutput_File::Open(std::string_view device, const AudioBlocks& blocks) {
    Close();
    if (i_file.empty()) return fnfErr;
    CFileCalls& calls = CFileCalls::Get();
    constexpr std::uint32_t kMode = 0644;
    if (const int codeL = calls.Open(i_file, FileAccess::kCreate, kMode, i_handle); codeL != 0) {
        i_handle = -1;
        return FromErrno(codeL);
    }
    if (!i_emptiedB) {
        // What cannot be cut (a pipe, /dev/null) is written from where it stands.
        if (const int codeL = calls.Truncate(i_handle, 0); codeL != 0 && codeL != EINVAL) return FromErrno(codeL);
        i_emptiedB = true;
        i_bytesL = 0;
    }
    i_waiting.clear();
    i_waiting.reserve(blocks.framesL * blocks.countL * kAudioOutput_Channels);
    i_writtenL = 0;
    i_bytes.resize(blocks.framesL * blocks.countL * kAudioOutput_Channels * sizeof(std::int16_t));
    const OSErr err = CAudioOutput_Paced::Open(device, blocks);
    if (Failed(err)) Close();
    return err;
}

void CAudioOutput_File::Close() {
    if (i_handle >= 0 && !i_waiting.empty()) {
        OSErr err = WriteUpTo(FramesPlayed());
        const std::size_t endL = std::min(i_waiting.size() / kAudioOutput_Channels, kFadeOut_Frames);
        for (std::size_t n = 0; n < endL * kAudioOutput_Channels; ++n)
            i_waiting[n] = Faded(i_waiting[n], FadeOut(n / kAudioOutput_Channels, endL));
        if (!Failed(err)) err = WriteUpTo(i_writtenL + endL);
        if (Failed(err)) i_waiting.clear();   // a full disc: the song is over all the same
    }
    CAudioOutput_Paced::Close();
    if (i_handle >= 0) CFileCalls::Get().Close(i_handle);
    i_handle = -1;
}

OSErr CAudioOutput_File::Deliver(std::span<const std::int16_t> stereo) {
    if (i_atOnceB) return Write(stereo);
    if (const OSErr err = WriteUpTo(FramesPlayed()); Failed(err)) return err;
    i_waiting.insert(i_waiting.end(), stereo.begin(), stereo.end());
    return noErr;
}

OSErr CAudioOutput_File::WriteUpTo(std::uint64_t frameL) {
    const auto frames = static_cast<std::size_t>(
        std::min<std::uint64_t>(frameL - std::min(frameL, i_writtenL), i_waiting.size() / kAudioOutput_Channels));
    const std::span<const std::int16_t> due = std::span(i_waiting).first(frames * kAudioOutput_Channels);
    if (const OSErr err = Write(due); Failed(err)) return err;
    i_waiting.erase(i_waiting.begin(), i_waiting.begin() + static_cast<std::ptrdiff_t>(due.size()));
    i_writtenL += frames;
    return noErr;
}

OSErr CAudioOutput_File::Write(std::span<const std::int16_t> stereo) {
    if (i_handle < 0) return ioErr;
    std::size_t sizeL = 0;
    for (const std::int16_t sample : stereo) {
        const auto bits = static_cast<std::uint16_t>(sample);
        i_bytes[sizeL++] = static_cast<std::byte>(bits & 0xFFU);
        i_bytes[sizeL++] = static_cast<std::byte>(bits >> 8U);
    }
    for (std::size_t doneL = 0; doneL < sizeL;) {
        std::size_t wroteL = 0;
        const int codeL =
            CFileCalls::Get().WriteAt(i_handle, i_bytesL, std::span(i_bytes).subspan(doneL, sizeL - doneL), wroteL);
        if (codeL != 0) return FromErrno(codeL);
        if (wroteL == 0) return ioErr;
        doneL += wroteL;
        i_bytesL += wroteL;
    }
    return noErr;
}
