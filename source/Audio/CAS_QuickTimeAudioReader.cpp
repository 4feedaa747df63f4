#include "Audio/CAS_QuickTimeAudioReader.h"

#include <algorithm>
#include <cstring>

#include "Core/AlertHook.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Core/SmallExtension.h"
#include "Files/CByteSource_File.h"

namespace {

constexpr std::uint64_t kSong_Most300 = UINT64_MAX / kBytesPer300th;

SpoolTraits ReaderTraits() {
    SpoolTraits traits;
    traits.name = "QuickTime";
    traits.type = SpoolType::kAudio;
    traits.ownPositionB = true;
    return traits;
}

}   // namespace

CAS_QuickTimeAudioReader::CAS_QuickTimeAudioReader(const CFileRef& file, std::uint64_t song300)
    : CAS_QuickTimeAudioReader(
          [file](std::unique_ptr<CByteSource>& sourceP) {
              auto fileP = std::make_unique<CByteSource_File>();
              const OSErr err = fileP->Open(file);
              sourceP = std::move(fileP);
              return LogStep(err, "QTNewDataReferenceFromURLCFString", file.GetPath());
          },
          SmallExtension(file.GetPath()), song300) {}

CAS_QuickTimeAudioReader::CAS_QuickTimeAudioReader(SourceMaker makeSource, std::string extension, std::uint64_t song300)
    : CSpooler(ReaderTraits()),
      i_makeSource(std::move(makeSource)),
      i_extension(std::move(extension)),
      i_songUnitsL(std::min(song300, kSong_Most300) * kBytesPer300th / kSpool_AudioUnitBytes) {}

OSErr CAS_QuickTimeAudioReader::Begin(Movie& movie) const {
    if (const OSErr err = i_makeSource(movie.sourceP); Failed(err)) return err;
    if (!movie.sourceP) return paramErr;
    const OSErr err = movie.audio.Open(*movie.sourceP, i_extension);
    return LogStep(err, "MovieAudioExtractionBegin");
}

std::uint64_t CAS_QuickTimeAudioReader::Total(const CMediaAudio& audio) const {
    return i_songUnitsL != 0 && !audio.IsTotalExact() ? i_songUnitsL : audio.TotalFrames() * kSpool_UnitsPerFrame;
}

OSErr CAS_QuickTimeAudioReader::GetEOF(std::uint64_t& sizeL) {
    sizeL = i_songUnitsL;
    if (sizeL != 0) return noErr;
    if (const auto movieP = i_movieP.Get()) {
        sizeL = GetTotal();
        return noErr;
    }
    const auto movieP = std::make_shared<Movie>();
    i_askedP.Set(movieP);
    OSErr err = Err();
    if (!Failed(err)) err = Begin(*movieP);
    i_askedP.Set(nullptr);
    if (!Failed(err)) sizeL = Total(movieP->audio);
    return err;
}

OSErr CAS_QuickTimeAudioReader::Open_i(bool writeB, std::uint64_t& sizeL) {
    if (writeB) return paramErr;
    i_endB = false;
    const auto movieP = std::make_shared<Movie>();
    i_movieP.Set(movieP);   // from now on an abort reaches it
    OSErr err = Err();      // an abort before the decoder was there to hear it
    if (!Failed(err)) err = Begin(*movieP);
    if (!Failed(err)) {
        const MediaFacts& facts = movieP->audio.Facts();
        LogF("Original Channel Layout: %d channels, %d Hz, %s in %s", facts.channels, facts.rate, facts.codec.c_str(),
             facts.container.c_str());
        LogF("New Channel Layout: 2 channels, %u Hz", kSamplesPerSecond);
        sizeL = Total(movieP->audio);
        return noErr;
    }
    i_movieP.Set(nullptr);
    return err;
}

OSErr CAS_QuickTimeAudioReader::Close_i(bool) {
    const auto movieP = i_movieP.Exchange(nullptr);
    if (movieP && movieP->audio.DamagedPackets() > 0)
        LogF("QuickTime: %llu damaged packets", static_cast<unsigned long long>(movieP->audio.DamagedPackets()));
    return noErr;
}

std::uint64_t CAS_QuickTimeAudioReader::Available_i() {
    const auto movieP = i_movieP.Get();
    if (!movieP || i_endB) return 0;
    const std::uint64_t totalL = movieP->audio.TotalFrames(), atL = movieP->audio.Position();
    return std::max<std::uint64_t>(totalL - std::min(totalL, atL), kSamplesAtATime) *
           kSpool_UnitsPerFrame;   // the total is an estimate
}

OSErr CAS_QuickTimeAudioReader::Read_i(std::span<std::byte> buffer, std::size_t& gotL) {
    gotL = 0;
    const auto movieP = i_movieP.Get();
    if (!movieP) return eofErr;
    i_samples.resize(buffer.size() / sizeof(std::int16_t));
    std::size_t samplesL = 0;
    const OSErr err = movieP->audio.Read(i_samples, samplesL);
    std::memcpy(buffer.data(), i_samples.data(), samplesL * sizeof(std::int16_t));
    gotL = samplesL * sizeof(std::int16_t);
    if (!Failed(err) || err == abortErr) return err;
    i_endB = true;
    if (err == eofErr) {
        SetTotal(Total(movieP->audio));
        return err;
    }
    AssertWords(err != paramErr, "\"Crazy freak out error\" == NULL");   // it could be read when it was opened
    if (IsQuiet()) return err;
    ShowAlert(Localize("bummer"), Localize("Some crazy QuickTime error trying to extract audio!  Bummer!"));
    return alreadyReportedErr;
}

OSErr CAS_QuickTimeAudioReader::Seek_i(std::uint64_t positionL) {
    const auto movieP = i_movieP.Get();
    if (!movieP) return eofErr;
    const OSErr err = movieP->audio.Seek(positionL / kSpool_UnitsPerFrame);
    if (!Failed(err)) {
        i_endB = false;
        SetRead(movieP->audio.Position() * kSpool_UnitsPerFrame);
    }
    return err;
}

void CAS_QuickTimeAudioReader::Abort_i() {
    for (const auto& movieP : {i_movieP.Get(), i_askedP.Get()})
        if (movieP) movieP->audio.Abort();
}
