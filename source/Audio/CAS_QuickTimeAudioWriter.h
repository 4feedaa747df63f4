#pragma once
#include <memory>

#include "Audio/CAS_SoundWriter.h"

enum class EncodedForm : unsigned char {
    kM4A,    // AAC in an MPEG-4 file, its index in front
    kFLAC,   // nothing lost
};

/** A sink that encodes through FFmpeg.
    Errors   paramErr where the form is not built in, or for a bit rate that it does not know. */
class CAS_QuickTimeAudioWriter final : public CAS_SoundWriter {
public:
    /** `kilobits` a second counts for AAC. */
    CAS_QuickTimeAudioWriter(const CFileRef& file, EncodedForm form, int kilobits = 192);
    ~CAS_QuickTimeAudioWriter() override;

protected:
    OSErr Begin(CSafeOutput& out, std::uint64_t frames) override;
    OSErr Encode(CSafeOutput& out, std::span<const std::int16_t> stereo) override;
    OSErr End(CSafeOutput& out) override;
    void Forget() override;

private:
    class Encoder;
    const EncodedForm i_form;
    const int i_kilobits;
    std::unique_ptr<Encoder> i_encoderP;
};
