#pragma once
#include "Audio/CAS_SoundWriter.h"

struct lame_global_struct;

/** How an MP3 is made. */
struct MP3Quality {
    int kilobits = 192;   // a second; with vbrB the average is up to `vbrLevel`
    bool vbrB = false;
    int vbrLevel = 2;   // 0 best to 9 smallest
};

/** A sink that writes an MP3 through LAME, with the header frame that tells players its length and the encoder's delay.
    Errors   paramErr for a quality that LAME does not know. */
class CAS_MP3 final : public CAS_SoundWriter {
public:
    explicit CAS_MP3(const CFileRef& file, MP3Quality quality = {});
    ~CAS_MP3() override;

protected:
    OSErr Begin(CSafeOutput& out, std::uint64_t frames) override;
    OSErr Encode(CSafeOutput& out, std::span<const std::int16_t> stereo) override;
    OSErr End(CSafeOutput& out) override;
    void Forget() override;
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override;
    OSErr Open_i(bool writeB, std::uint64_t& sizeL) override;

private:
    const MP3Quality i_quality;
    lame_global_struct* i_lameP = nullptr;
    std::vector<std::byte> i_mp3;
};
