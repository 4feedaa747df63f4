#include "SongFiles/VerifyFiles.h"

#include <algorithm>
#include <vector>

#include "Core/SmallExtension.h"
#include "Files/CByteSource_File.h"
#include "Media/CMediaAudio.h"
#include "Zip/CByteSource_Zip.h"
#include "Zip/CZipArchive.h"

namespace {

constexpr std::size_t kVerify_Block = 64 * 1024;
constexpr std::size_t kVerify_Samples = 2 * 44'100;   // one second

/** Fills `to` as far as the source goes; noErr at its end. */
OSErr ReadFull(CByteSource& source, std::span<std::byte> to, std::size_t& gotL) {
    gotL = 0;
    while (gotL < to.size()) {
        std::size_t stepL = 0;
        const OSErr err = source.Read(to.subspan(gotL), stepL);
        gotL += stepL;
        if (err == eofErr) return noErr;
        if (Failed(err)) return err;
    }
    return noErr;
}

OSErr Compare(CByteSource& packed, CByteSource& file, const std::atomic<bool>& abortB) {
    std::vector<std::byte> ours(kVerify_Block), theirs(kVerify_Block);
    for (;;) {
        if (abortB.load(std::memory_order_relaxed)) return abortErr;
        std::size_t oursL = 0, theirsL = 0;
        if (const OSErr err = ReadFull(packed, ours, oursL); Failed(err)) return err;
        if (const OSErr err = ReadFull(file, theirs, theirsL); Failed(err)) return err;
        if (oursL != theirsL ||
            !std::equal(ours.begin(), ours.begin() + static_cast<std::ptrdiff_t>(oursL), theirs.begin()))
            return ioErr;
        if (oursL < kVerify_Block) return noErr;
    }
}

}   // namespace

OSErr VerifyAudio(const CFileRef& file) {
    CByteSource_File source;
    if (const OSErr err = source.Open(file); Failed(err)) return err;
    CMediaAudio audio;
    if (const OSErr err = audio.Open(source, SmallExtension(file.GetPath())); Failed(err)) return err;
    std::vector<std::int16_t> samples(kVerify_Samples);
    std::size_t gotL = 0;
    const OSErr err = audio.Read(samples, gotL);
    return gotL == 0 ? FirstOf(err, eofErr) : noErr;
}

OSErr VerifyZip(const CFileRef& zip, std::span<const PackedFile> files, const std::atomic<bool>& abortB) {
    CZipArchive archive;
    if (const OSErr err = archive.Open(zip); Failed(err)) return err;
    if (archive.IsRepaired() || archive.Members().size() != files.size()) return ioErr;
    for (const PackedFile& packed : files) {
        const auto member = std::ranges::find(archive.Members(), packed.member, &CZipMember::name);
        if (member == archive.Members().end()) return ioErr;
        CByteSource_Zip source;
        CByteSource_File file;
        if (const OSErr err = source.Open(zip, *member); Failed(err)) return err;
        if (const OSErr err = file.Open(packed.file); Failed(err)) return err;
        if (source.Size() != file.Size()) return ioErr;
        if (const OSErr err = Compare(source, file, abortB); Failed(err)) return err;
    }
    return noErr;
}
