#include "Audio/CAS_MP3.h"

#include <lame/lame.h>

#include <algorithm>

#include "Core/Assertions.h"

namespace {
constexpr std::size_t kMP3_FramesAtATime = 1U << 14;
constexpr std::size_t kMP3_Extra = 7200;   // what LAME asks for beyond 1.25 bytes a sample
constexpr const char* kMP3_NoReading = "\"Use QuickTime to read from an MP3\" == NULL";
}   // namespace

CAS_MP3::CAS_MP3(const CFileRef& file, MP3Quality quality) : CAS_SoundWriter(file, "MP3 File"), i_quality(quality) {}
CAS_MP3::~CAS_MP3() { Forget(); }

OSErr CAS_MP3::Open_i(bool writeB, std::uint64_t& sizeL) {
    if (!AssertWords(writeB, kMP3_NoReading)) return paramErr;
    return CAS_SoundWriter::Open_i(writeB, sizeL);
}

OSErr CAS_MP3::Read_i(std::span<std::byte>, std::size_t& gotL) {
    gotL = 0;
    AssertWords(false, kMP3_NoReading);
    return eofErr;
}

void CAS_MP3::Forget() {
    if (i_lameP != nullptr) lame_close(i_lameP);
    i_lameP = nullptr;
}

OSErr CAS_MP3::Begin(CSafeOutput&, std::uint64_t) {
    Forget();
    i_lameP = lame_init();
    if (i_lameP == nullptr) return memFullErr;
    lame_set_errorf(i_lameP, [](const char*, va_list) {});
    lame_set_msgf(i_lameP, [](const char*, va_list) {});
    lame_set_in_samplerate(i_lameP, static_cast<int>(kSamplesPerSecond));
    lame_set_out_samplerate(i_lameP, static_cast<int>(kSamplesPerSecond));
    lame_set_num_channels(i_lameP, 2);
    lame_set_write_id3tag_automatic(i_lameP, 0);   // tags are not this spool's affair
    lame_set_bWriteVbrTag(i_lameP, 1);
    bool knownB = true;
    if (i_quality.vbrB) {
        knownB = i_quality.vbrLevel >= 0 && i_quality.vbrLevel <= 9;
        lame_set_VBR(i_lameP, vbr_default);
        lame_set_VBR_q(i_lameP, i_quality.vbrLevel);
    } else {
        knownB = i_quality.kilobits >= 32 && i_quality.kilobits <= 320;
        lame_set_brate(i_lameP, i_quality.kilobits);
    }
    return knownB && lame_init_params(i_lameP) >= 0 ? noErr : paramErr;
}

OSErr CAS_MP3::Encode(CSafeOutput& out, std::span<const std::int16_t> stereo) {
    while (!stereo.empty()) {
        const auto piece = stereo.first(std::min(stereo.size(), kMP3_FramesAtATime * 2));
        i_mp3.resize(piece.size() * 5 / 4 + kMP3_Extra);
        const int gotL = lame_encode_buffer_interleaved(
            i_lameP, const_cast<short*>(piece.data()), static_cast<int>(piece.size() / 2),   // LAME only reads it
            reinterpret_cast<unsigned char*>(i_mp3.data()), static_cast<int>(i_mp3.size()));
        if (gotL < 0) return gotL == -2 ? memFullErr : paramErr;
        if (const OSErr err = out.Write(std::span(i_mp3).first(static_cast<std::size_t>(gotL))); Failed(err))
            return err;
        stereo = stereo.subspan(piece.size());
    }
    return noErr;
}

OSErr CAS_MP3::End(CSafeOutput& out) {
    i_mp3.resize(kMP3_Extra);
    auto* bytesP = reinterpret_cast<unsigned char*>(i_mp3.data());
    const int gotL = lame_encode_flush(i_lameP, bytesP, static_cast<int>(i_mp3.size()));
    if (gotL < 0) return paramErr;
    if (const OSErr err = out.Write(std::span(i_mp3).first(static_cast<std::size_t>(gotL))); Failed(err)) return err;
    const std::size_t tagL = lame_get_lametag_frame(i_lameP, bytesP, i_mp3.size());   // in the place LAME kept for it
    return tagL > 0 && tagL <= i_mp3.size() ? out.Patch(0, std::span(i_mp3).first(tagL)) : noErr;
}
