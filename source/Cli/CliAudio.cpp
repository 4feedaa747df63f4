#include "Cli/CliAudio.h"

#include <cmath>
#include <iomanip>
#include <sstream>

#include "Audio/CAS_MP3.h"
#include "Audio/CAS_QuickTimeAudioWriter.h"
#include "Audio/CAS_Wav.h"
#include "Audio/CAudioPlayerSettings.h"
#include "Audio/CLoudness.h"
#include "Audio/SongSource.h"
#include "Cli/CCliHost.h"
#include "Cli/CliCommand.h"
#include "Core/SmallExtension.h"
#include "Library/CSongFiles.h"
#include "Play/CSongSound.h"
#include "Values/CPreferences.h"

namespace {

Ref<CSpooler> MakeSink(const CFileRef& file) {
    const std::string extension = SmallExtension(file.GetPath());
    if (extension == "wav") return MakeRef<CAS_Wav>(file);
    if (extension == "mp3") return MakeRef<CAS_MP3>(file);
    if (extension == "m4a") return MakeRef<CAS_QuickTimeAudioWriter>(file, EncodedForm::kM4A);
    if (extension == "flac") return MakeRef<CAS_QuickTimeAudioWriter>(file, EncodedForm::kFLAC);
    return nullptr;
}

/** JSON has no infinity: silence is null. */
std::string Decibels(double valueF) {
    if (!std::isfinite(valueF)) return "null";
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << valueF;
    return text.str();
}

}   // namespace

SongSound SongSoundOf(const CliWords& words) {
    SongSound sound;
    sound.pitch = words.Number("--pitch", sound.pitch);
    sound.tempo = words.Number("--tempo", sound.tempo);
    sound.volumeF = words.Number("--volume", sound.volumeF);
    sound.gainF = static_cast<float>(std::pow(10.0, words.Number("--gain", 0.0) / 20));
    sound.vocal = static_cast<VocalMode>(words.Number("--vocal", 0));
    return sound;
}

int RenderAudio(const CliCall& call) {
    const std::string& file = call.words.arguments[0];
    CCliHost host;
    const Ref<CSpooler> sinkP = MakeSink(CFileRef(*call.words.Text("--out")));
    if (!sinkP) return call.Usage("the name of what is made must end in .wav, .mp3, .m4a or .flac");
    if (CliCall::WouldReplace(*call.words.Text("--out"), file))
        return call.Usage("what is made would take the place of the song");
    std::uint64_t framesL = 0, sourceFramesL = 0;
    std::string blamed = file;
    const OSErr err = host.OnTask([&] {
        Ref<CSpooler> sourceP;
        if (const OSErr sourceErr = MakeSongSource(CFileRef(file), sourceP); Failed(sourceErr)) return sourceErr;
        CSongRender render(sourceP, sinkP);
        const OSErr renderErr = render.Run(SongSoundOf(call.words));
        if (render.HasSinkFailed()) blamed = *call.words.Text("--out");
        framesL = render.Frames();
        sourceFramesL = sourceP->GetTotal() / 2;
        return renderErr;
    });
    if (Failed(err)) return CliFailFile(call.context, err, blamed);
    call.context.out << "{\"frames\":" << framesL << ",\"source_frames\":" << sourceFramesL << "}\n";
    return 0;
}

int FindAutoCue(const CliCall& call) {
    CCliHost host;
    const CFileRef file(call.words.arguments[0]);
    const AudioPlayerSettings settings = AudioPlayerSettings::Read(*CliPreferences(call.context));
    long start300 = 0;
    const OSErr err = host.OnTask([&] {
        SongPlayParts parts;
        const bool zipB = IsZipFile(file);
        (zipB ? parts.spec.zip : parts.spec.audio) = file;
        parts.spec.placesRef = std::make_shared<CSongFiles>(zipB ? SDB_SongFile_ZIP : SDB_SongFile_AUDIO, file);
        parts.spec.name = parts.spec.placesRef->Name();
        parts.loadP = MakeRef<CSongLoad>(parts.spec);
        const OSErr loadErr = parts.loadP->Load(nullptr);
        return Failed(loadErr) ? loadErr : CSongSound(parts).FindStart(settings, start300);
    });
    if (Failed(err)) return CliFailFile(call.context, err, file.GetPath());
    call.context.out << "{\"start300\":" << start300 << "}\n";
    return 0;
}

int MeasureLoudness(const CliCall& call) {
    const std::string& file = call.words.arguments[0];
    CCliHost host;
    Loudness loudness;
    const OSErr err = host.OnTask([&] {
        Ref<CSpooler> sourceP;
        const OSErr sourceErr = MakeSongSource(CFileRef(file), sourceP);
        return Failed(sourceErr) ? sourceErr : CLoudness::Measure(*sourceP, std::atomic<bool>{false}, loudness);
    });
    if (Failed(err)) return CliFailFile(call.context, err, file);
    call.context.out << "{\"lufs\":" << Decibels(loudness.lufs) << ",\"peak_db\":" << Decibels(loudness.peakDB)
                     << ",\"gain_db\":" << Decibels(loudness.GainDB()) << "}\n";
    return 0;
}
