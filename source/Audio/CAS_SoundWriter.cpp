#include "Audio/CAS_SoundWriter.h"

#include <cstring>

#include "Core/CLog.h"

namespace {
SpoolTraits WriterTraits(std::string name) {
    SpoolTraits traits;
    traits.name = std::move(name);
    traits.type = SpoolType::kAudio;
    return traits;
}
}   // namespace

CAS_SoundWriter::CAS_SoundWriter(const CFileRef& file, std::string name)
    : CSpooler(WriterTraits(std::move(name))), i_out(file) {}

OSErr CAS_SoundWriter::Open_i(bool writeB, std::uint64_t& sizeL) {
    if (!writeB) return paramErr;
    i_block.clear();
    i_writeErr = noErr;
    OSErr err = i_out.Start();
    if (!Failed(err)) err = Begin(i_out, sizeL / kSpool_UnitsPerFrame);
    if (!Failed(err)) return noErr;
    Forget();
    i_out.Abandon();
    LogF("### Error opening file for writing: %s", ErrorText(err).c_str());
    LogF("The file was: %s\r", i_out.Path().c_str());
    return err;
}

OSErr CAS_SoundWriter::Write_i(std::span<const std::byte> bytes) {
    const std::size_t beforeL = i_block.size(), addedL = bytes.size() / sizeof(std::int16_t);
    i_block.resize(beforeL + addedL);
    std::memcpy(i_block.data() + beforeL, bytes.data(), addedL * sizeof(std::int16_t));
    const std::size_t wholeL = i_block.size() / kSpool_UnitsPerFrame * kSpool_UnitsPerFrame;
    const OSErr err = Encode(i_out, std::span<const std::int16_t>(i_block).first(wholeL));
    i_block.erase(i_block.begin(), i_block.begin() + static_cast<std::ptrdiff_t>(wholeL));
    i_writeErr = FirstOf(i_writeErr, err);
    return LogStep(err, "writing to file", i_out.Path());
}

OSErr CAS_SoundWriter::Close_i(bool writeB) {
    if (!writeB || !i_out.IsOpen()) return noErr;
    OSErr err = FirstOf(i_writeErr, Err());   // a stopped encoding is no file
    if (!Failed(err)) err = End(i_out);
    Forget();
    if (!Failed(err)) err = i_out.Finish();
    if (Failed(err)) i_out.Abandon();
    if (Failed(err) && !IsIgnorable(err)) LogF("### Error closing file spool: %s", ErrorText(err).c_str());
    return err;
}
