#include "Cli/CliAudio.h"

#include <algorithm>
#include <cctype>
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
#include "Core/CPreferences.h"
#include "Core/SmallExtension.h"
#include "Library/CSongFiles.h"
#include "Play/CSongSound.h"

namespace {

constexpr std::string_view kAudio_Usage_Render =
    "usage: audio render FILE --out FILE.wav|.mp3|.m4a|.flac [--pitch N] [--tempo X] [--volume V] [--gain DB] [--vocal "
    "0|1|2|3]";
constexpr std::string_view kAudio_Usage_AutoCue = "usage: audio autocue FILE";
constexpr std::string_view kAudio_Usage_Loudness = "usage: audio loudness FILE";
constexpr std::string_view kAudio_Usage = "usage: audio render|autocue|loudness FILE ...";

constexpr double kMost_GainDB = 60;

Ref<CSpooler> MakeSink(const CFileRef& file) {
    const std::string extension = SmallExtension(file.GetPath());
    if (extension == "wav") return MakeRef<CAS_Wav>(file);
    if (extension == "mp3") return MakeRef<CAS_MP3>(file);
    if (extension == "m4a") return MakeRef<CAS_QuickTimeAudioWriter>(file, EncodedForm::kM4A);
    if (extension == "flac") return MakeRef<CAS_QuickTimeAudioWriter>(file, EncodedForm::kFLAC);
    return nullptr;
}

int Render(const CliContext& context, std::span<const std::string> given) {
    const auto words = CliWords::Read(given, {"--out", "--pitch", "--tempo", "--volume", "--gain", "--vocal"});
    const std::string* outP = words ? words->Value("--out") : nullptr;
    if (outP == nullptr || outP->empty() || words->files.size() != 1) return CliUsage(context, kAudio_Usage_Render);
    const auto sound = ReadSongSound(*words);
    if (!sound) return CliUsage(context, kAudio_Usage_Render);

    CCliHost host;
    const Ref<CSpooler> sinkP = MakeSink(CFileRef(*outP));
    if (!sinkP) return CliUsage(context, kAudio_Usage_Render);
    std::uint64_t framesL = 0, sourceFramesL = 0;
    const OSErr err = host.OnTask([&] {
        Ref<CSpooler> sourceP;
        if (const OSErr sourceErr = MakeSongSource(CFileRef(words->files[0]), sourceP); Failed(sourceErr))
            return sourceErr;
        CSongRender render(sourceP, sinkP);
        const OSErr renderErr = render.Run(*sound);
        framesL = render.Frames();
        sourceFramesL = sourceP->GetTotal() / 2;
        return renderErr;
    });
    if (Failed(err)) return CliFailFile(context, err, words->files[0]);
    context.out << "{\"frames\":" << framesL << ",\"source_frames\":" << sourceFramesL << "}\n";
    return 0;
}

int AutoCue(const CliContext& context, std::span<const std::string> given) {
    const auto words = CliWords::Read(given, {});
    if (!words || words->files.size() != 1) return CliUsage(context, kAudio_Usage_AutoCue);
    CCliHost host;
    const AudioPlayerSettings settings = AudioPlayerSettings::Read(*CliPreferences(context));
    long start300 = 0;
    const OSErr err = host.OnTask([&] {
        const CFileRef file(words->files[0]);
        SongPlayParts parts;
        const bool zipB = IsZipFile(file);
        (zipB ? parts.spec.zip : parts.spec.audio) = file;
        parts.spec.placesRef = std::make_shared<CSongFiles>(zipB ? SDB_SongFile_ZIP : SDB_SongFile_AUDIO, file);
        parts.spec.name = parts.spec.placesRef->Name();
        parts.loadP = MakeRef<CSongLoad>(parts.spec);
        const OSErr loadErr = parts.loadP->Load(nullptr);
        return Failed(loadErr) ? loadErr : CSongSound(parts).FindStart(settings, start300);
    });
    if (Failed(err)) return CliFailFile(context, err, words->files[0]);
    context.out << "{\"start300\":" << start300 << "}\n";
    return 0;
}

/** JSON has no infinity: silence is null. */
std::string Decibels(double valueF) {
    if (!std::isfinite(valueF)) return "null";
    std::ostringstream text;
    text << std::fixed << std::setprecision(2) << valueF;
    return text.str();
}

/** The whole of `source`, as it comes. */
OSErr Measure(CSpooler& source, Loudness& loudness) {
    std::uint64_t sizeL = 0;
    if (const OSErr err = source.Open(false, sizeL); Failed(err)) return err;
    CLoudness meter;
    std::vector<std::int16_t> block(kSamplesAtATime);
    OSErr err = noErr;
    while (!Failed(err)) {
        std::size_t gotL = 0;
        err = source.Read(std::as_writable_bytes(std::span(block)), gotL);
        if (!Failed(err)) err = meter.Add(std::span(block).first(gotL / sizeof(std::int16_t)));
    }
    err = FirstOf(err == eofErr ? noErr : err, source.Close(false));
    return FirstOf(err, meter.Result(loudness));
}

int MeasureLoudness(const CliContext& context, std::span<const std::string> given) {
    const auto words = CliWords::Read(given, {});
    if (!words || words->files.size() != 1) return CliUsage(context, kAudio_Usage_Loudness);
    CCliHost host;
    Loudness loudness;
    const OSErr err = host.OnTask([&] {
        Ref<CSpooler> sourceP;
        const OSErr sourceErr = MakeSongSource(CFileRef(words->files[0]), sourceP);
        return Failed(sourceErr) ? sourceErr : Measure(*sourceP, loudness);
    });
    if (Failed(err)) return CliFailFile(context, err, words->files[0]);
    context.out << "{\"lufs\":" << Decibels(loudness.lufs) << ",\"peak_db\":" << Decibels(loudness.peakDB)
                << ",\"gain_db\":" << Decibels(loudness.GainDB()) << "}\n";
    return 0;
}

}   // namespace

std::optional<SongSound> ReadSongSound(const CliWords& words) {
    SongSound sound;
    const auto take = [&words](std::string_view option, auto& to, auto isGood) {
        const std::string* textP = words.Value(option);
        if (textP == nullptr) return true;
        const auto value = ReadNumber<std::remove_reference_t<decltype(to)>>(*textP);
        if (!value || !isGood(*value)) return false;
        to = *value;
        return true;
    };
    int vocalL = 0;
    double gainDB = 0;
    if (!take("--pitch", sound.pitch, [](double v) { return std::abs(v) <= kTimePitch_MostPitch; }) ||
        !take("--tempo", sound.tempo,
              [](double v) { return v >= kTimePitch_LeastTempo && v <= kTimePitch_MostTempo; }) ||
        !take("--volume", sound.volumeF, [](float v) { return v >= 0 && std::isfinite(v); }) ||
        !take("--gain", gainDB, [](double v) { return std::abs(v) <= kMost_GainDB; }) ||
        !take("--vocal", vocalL, [](int v) { return v >= 0 && v <= 3; }))
        return {};
    sound.gainF = static_cast<float>(std::pow(10.0, gainDB / 20));
    sound.vocal = static_cast<VocalMode>(vocalL);
    return sound;
}

int RunAudio(const CliContext& context, std::span<const std::string> words) {
    if (words.empty()) return CliUsage(context, kAudio_Usage);
    const auto rest = words.subspan(1);
    if (words[0] == "render") return Render(context, rest);
    if (words[0] == "autocue") return AutoCue(context, rest);
    if (words[0] == "loudness") return MeasureLoudness(context, rest);
    return CliUsage(context, kAudio_Usage);
}
