// The spools that read and write files, against the ffmpeg program and each other.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <sstream>

#include "Audio/CAS_File.h"
#include "Audio/CAS_Memory.h"
#include "Audio/CAS_MP3.h"
#include "Audio/CAS_Multifile.h"
#include "Audio/CAS_QuickTimeAudioReader.h"
#include "Audio/CAS_QuickTimeAudioWriter.h"
#include "Audio/CAS_Wav.h"
#include "Audio/CLoudness.h"
#include "Audio/CSpoolPump.h"
#include "Core/ProgramNumber.h"
#include "Core/TempFolder.h"
#include "Files/CByteSource_File.h"
#include "Files/FileTest.h"
#include "Media/MediaFiles.h"
#include "Platform/CFileCalls_Faults.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

namespace {

using Samples = std::vector<std::int16_t>;
using Path = std::filesystem::path;

Samples Sweep(std::size_t frames) {
    Samples samples(frames * 2);
    for (std::size_t n = 0; n < frames; ++n) {
        const double t = static_cast<double>(n) / 44100;
        samples[2 * n] = static_cast<std::int16_t>(12000 * std::sin(6.2831853 * (300 * t + 400 * t * t)));
        samples[2 * n + 1] = static_cast<std::int16_t>(9000 * std::sin(6.2831853 * (1500 * t - 100 * t * t)));
    }
    return samples;
}
std::vector<std::byte> BytesOf(const Samples& samples) {
    const auto bytes = std::as_bytes(std::span(samples));
    return {bytes.begin(), bytes.end()};
}
Samples SamplesOf(const std::vector<std::byte>& bytes) {
    Samples samples(bytes.size() / 2);
    if (!samples.empty()) std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
    return samples;
}
/** All of `sourceP`, through a pump. */
Samples PumpOut(const Ref<CSpooler>& sourceP, OSErr wanted = noErr) {
    const auto memoryP = MakeRef<CAS_Memory>();
    EXPECT_EQ(CSpoolPump(sourceP, memoryP).Run(), wanted);
    return SamplesOf(memoryP->Bytes());
}
OSErr PumpIn(const Samples& samples, const Ref<CSpooler>& sinkP) {
    return CSpoolPump(MakeRef<CAS_Memory>(BytesOf(samples)), sinkP).Run();
}

class SoundFiles : public FileTest {
protected:
    void SetUp() override {
        FileTest::SetUp();
        MediaFiles::Get();
        i_managerP = std::make_unique<CThreadManager>();
        TagThread(1, true);   // this thread pumps, and closing is then done at once
    }
    void TearDown() override {
        TagThread(0, false);
        i_managerP.reset();
        FileTest::TearDown();
    }
    [[nodiscard]] Path Song(const char* nameZ) const { return i_root / "songs" / nameZ; }
    static Path Made(const char* nameZ) { return MediaFiles::Folder() / nameZ; }

private:
    std::unique_ptr<CThreadManager> i_managerP;   // without one the application is ending, and so are all pumps
};

TEST_F(SoundFiles, AMovieIsReadThroughAPumpAsItIsDecoded) {
    const auto readerP = MakeRef<CAS_QuickTimeAudioReader>(CFileRef(Made("movie.mp4")));
    EXPECT_EQ(readerP->TrackedName(), "Spooler: QuickTime");
    std::uint64_t sizeL = 0;
    ASSERT_EQ(readerP->GetEOF(sizeL), noErr);
    EXPECT_NEAR(static_cast<double>(sizeL), 2.3 * 88200, 9000);
    const Samples wanted = MediaFiles::Samples(MediaFiles::Bytes(Made("movie.mp4.witness")));
    EXPECT_EQ(PumpOut(readerP), wanted);
    EXPECT_EQ(readerP->GetTotal(), wanted.size());   // exact at the end
}

TEST_F(SoundFiles, AReaderIsSoughtByThePartOfItsTotal) {
    const auto readerP =
        MakeRef<CAS_QuickTimeAudioReader>(CFileRef(Made("vbr.mp3")), 690U);   // 2.3 s, as the library has it
    const Samples wanted = MediaFiles::Samples(MediaFiles::Bytes(Made("vbr.mp3.witness")));
    std::uint64_t sizeL = 0;
    ASSERT_EQ(readerP->Open(false, sizeL), noErr);
    EXPECT_EQ(sizeL, 690U * 588 / 2);
    for (const double place : {0.5, 0.1, 0.9, 0.0}) {
        ASSERT_EQ(readerP->Seek(place), noErr);
        const std::uint64_t atL = readerP->GetPos();
        EXPECT_NEAR(static_cast<double>(atL), place * static_cast<double>(sizeL), 2);
        Samples part(1000);
        std::size_t gotL = 0;
        ASSERT_EQ(readerP->Read(std::as_writable_bytes(std::span(part)), gotL), noErr);
        ASSERT_EQ(gotL, 2000U);
        EXPECT_TRUE(std::equal(part.begin(), part.end(), wanted.begin() + static_cast<std::ptrdiff_t>(atL))) << place;
    }
    readerP->Abort();
    Samples part(1000);
    std::size_t gotL = 0;
    EXPECT_EQ(readerP->Read(std::as_writable_bytes(std::span(part)), gotL), abortErr);
    EXPECT_EQ(readerP->Close(false), noErr);
}

TEST_F(SoundFiles, WhatCannotBeReadHasAStatus) {
    WriteWhole(Song("text.mp3"), "no sound at all");
    for (const char* nameZ : {"text.mp3", "missing.mp3"}) {
        std::uint64_t sizeL = 0;
        EXPECT_EQ(MakeRef<CAS_QuickTimeAudioReader>(CFileRef(Song(nameZ)))->Open(false, sizeL),
                  nameZ[0] == 't' ? paramErr : fnfErr);
    }
}

TEST_F(SoundFiles, EncodersWriteWhatTheFfmpegProgramReads) {
    const Samples sweep = Sweep(50001);
    const struct {
        const char* nameZ;
        Ref<CSpooler> sinkP;
        double loss;   // mean square of the error against that of the sound
    } cases[] = {
        {"a.wav", MakeRef<CAS_Wav>(CFileRef(Song("a.wav"))), 0},
        {"a.flac", MakeRef<CAS_QuickTimeAudioWriter>(CFileRef(Song("a.flac")), EncodedForm::kFLAC), 0},
        {"a.m4a", MakeRef<CAS_QuickTimeAudioWriter>(CFileRef(Song("a.m4a")), EncodedForm::kM4A), 0.003},
        {"a.mp3", MakeRef<CAS_MP3>(CFileRef(Song("a.mp3"))), 0.001},
        {"v.mp3", MakeRef<CAS_MP3>(CFileRef(Song("v.mp3")), MP3Quality{.vbrB = true}), 0.001},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.nameZ);
        ASSERT_EQ(PumpIn(sweep, c.sinkP), noErr);
        const Samples back = MediaFiles::Decode(Song(c.nameZ));
        if (c.loss == 0) {
            EXPECT_EQ(back, sweep);
            continue;
        }
        ASSERT_GE(back.size(), sweep.size());   // no delay, and at most the padding of the last packet
        EXPECT_LE(back.size(), sweep.size() + 2 * 1152);
        double error = 0, power = 0;
        for (std::size_t n = 0; n < sweep.size(); ++n) {
            error += std::pow(double{1} * sweep[n] - back[n], 2);
            power += std::pow(double{1} * sweep[n], 2);
        }
        EXPECT_LT(error, power * c.loss);
    }
}

TEST_F(SoundFiles, AnEncodingThatEndsBadlyLeavesTheGoodFile) {
    const auto sinks = [this](const Path& path) {
        return std::vector<Ref<CSpooler>>{MakeRef<CAS_Wav>(CFileRef(path)), MakeRef<CAS_MP3>(CFileRef(path)),
                                          MakeRef<CAS_QuickTimeAudioWriter>(CFileRef(path), EncodedForm::kM4A),
                                          MakeRef<CAS_File>(CFileRef(path))};
    };
    WriteWhole(Song("good"), "the good one");
    for (const bool abortB : {false, true}) {
        for (const Ref<CSpooler>& sinkP : sinks(Song("good"))) {
            SCOPED_TRACE(sinkP->TrackedName());
            std::uint64_t sizeL = 0;
            ASSERT_EQ(sinkP->Open(true, sizeL), noErr);
            ASSERT_EQ(sinkP->Write(BytesOf(Sweep(30000))), noErr);
            if (abortB) {
                sinkP->Abort();
            } else {
                sinkP->SetError(false, ioErr);
            }
            EXPECT_NE(sinkP->Close(true), noErr);
            EXPECT_EQ(ReadWhole(Song("good")), "the good one");
        }
    }
    for (const Ref<CSpooler>& sinkP : sinks(Song("good"))) {   // dropped without a close
        std::uint64_t sizeL = 0;
        ASSERT_EQ(sinkP->Open(true, sizeL), noErr);
    }
    EXPECT_EQ(ReadWhole(Song("good")), "the good one");
    ASSERT_EQ(PumpIn(Sweep(100), MakeRef<CAS_File>(CFileRef(Song("good")))), noErr);
    EXPECT_EQ(ReadWhole(Song("good")).size(), 400U);
}

TEST_F(SoundFiles, AFullDiscIsToldAndLeavesNoFile) {
    CFileCalls_Faults faults(CFileCalls::Get());
    const auto sinkP = MakeRef<CAS_Wav>(CFileRef(Song("full.wav")));
    std::uint64_t sizeL = 0;
    ASSERT_EQ(sinkP->Open(true, sizeL), noErr);
    CFileCalls::Install(&faults);
    faults.SetSpace(100);
    EXPECT_EQ(sinkP->Write(BytesOf(Sweep(100))), dskFulErr);
    EXPECT_EQ(sinkP->Close(true), dskFulErr);
    EXPECT_FALSE(std::filesystem::exists(Song("full.wav")));
}

TEST_F(SoundFiles, AnEncoderTellsOfEachCallThatFailsForWantOfRoom) {
    for (const EncodedForm form : {EncodedForm::kM4A, EncodedForm::kFLAC}) {
        std::string good;
        const Samples sweep = Sweep(12000);
        for (long n = -1, calls = 0; n < calls; ++n) {   // the first round counts the calls
            CFileCalls_Faults faults(CFileCalls::Get());
            std::string failed;
            faults.SetWatch([&](long at, const char* callZ, const Path&) {
                if (at == n) failed = callZ;
            });
            if (n >= 0) faults.FailAt(n, ENOSPC);
            CFileCalls::Install(&faults);
            const OSErr err = PumpIn(sweep, MakeRef<CAS_QuickTimeAudioWriter>(CFileRef(Song("full")), form));
            CFileCalls::Install(nullptr);
            if (n < 0) {
                ASSERT_EQ(err, noErr);
                calls = faults.Count();
                good = ReadWhole(Song("full"));
            } else if (failed == "write" || failed == "fstat" || failed == "truncate") {
                EXPECT_EQ(err, dskFulErr) << failed << ' ' << n;
            }
            // Whole or not there: what fails behind the renaming, the sync of the folder, is told as well.
            EXPECT_TRUE(Failed(err) || std::filesystem::exists(Song("full"))) << failed << ' ' << n;
            if (std::filesystem::exists(Song("full"))) {
                EXPECT_EQ(ReadWhole(Song("full")), good) << failed << ' ' << n;
            }
            std::filesystem::remove(Song("full"));
        }
    }
}

TEST_F(SoundFiles, TheIndexOfAnM4AStandsInFront) {
    ASSERT_EQ(PumpIn(Sweep(50001), MakeRef<CAS_QuickTimeAudioWriter>(CFileRef(Song("a.m4a")), EncodedForm::kM4A)),
              noErr);
    const std::string bytes = ReadWhole(Song("a.m4a"));
    EXPECT_LT(bytes.find("moov"), bytes.find("mdat"));
    EXPECT_EQ(std::ranges::distance(std::filesystem::directory_iterator(i_root / "songs")), 1);
}

TEST_F(SoundFiles, AFileSpoolGivesTheBytesOfItsFile) {
    const Samples sweep = Sweep(3000);
    const auto bytes = BytesOf(sweep);
    WriteWhole(Song("raw"), {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    EXPECT_EQ(PumpOut(MakeRef<CAS_File>(CFileRef(Song("raw")))), sweep);

    const auto fileP = MakeRef<CAS_File>(CFileRef(Song("raw")));
    std::uint64_t sizeL = 0;
    ASSERT_EQ(fileP->Open(false, sizeL), noErr);
    EXPECT_EQ(sizeL, 6000U);
    ASSERT_EQ(fileP->Seek(0.5), noErr);
    EXPECT_EQ(fileP->GetPos(), 2940U);   // sound goes to whole steps of 588
    Samples part(10);
    std::size_t gotL = 0;
    ASSERT_EQ(fileP->Read(std::as_writable_bytes(std::span(part)), gotL), noErr);
    EXPECT_TRUE(std::equal(part.begin(), part.end(), sweep.begin() + 2940));
    ASSERT_EQ(fileP->Seek(1), noErr);
    std::filesystem::resize_file(Song("raw"), 100);
    ASSERT_EQ(fileP->Seek(0.9), noErr);
    EXPECT_EQ(fileP->Read(std::as_writable_bytes(std::span(part)), gotL), eofErr);   // cut off under the reader
    EXPECT_EQ(fileP->Close(false), noErr);
}

TEST_F(SoundFiles, ASyncOffsetMovesTheReaderEitherWay) {
    const Samples sweep = Sweep(500);
    const auto bytes = BytesOf(sweep);
    WriteWhole(Song("raw"), {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    for (const int frames : {30, -30, 600, -3000}) {
        const auto fileP = MakeRef<CAS_File>(CFileRef(Song("raw")));
        ASSERT_EQ(fileP->SetSyncOffset(frames * 4), noErr);
        Samples wanted(static_cast<std::size_t>(std::max(0, -frames)) * 2);
        wanted.insert(wanted.end(), sweep.begin() + std::clamp(frames, 0, 500) * 2, sweep.end());
        EXPECT_EQ(PumpOut(fileP), wanted) << frames;
    }
    EXPECT_EQ(MakeRef<CAS_File>(CFileRef(Song("raw")))->SetSyncOffset(6), paramErr);
    EXPECT_NE(ReadWhole(i_root / "log").find("* Audio Sync offset: 120 bytes = 30 samples"), std::string::npos);
}

TEST_F(SoundFiles, AMissingFileIsToldOnceUnderItsOldTitle) {
    std::uint64_t sizeL = 0;
    EXPECT_EQ(MakeRef<CAS_File>(CFileRef(Song("gone")), SpoolType::kBin)->Open(false, sizeL), alreadyReportedErr);
    EXPECT_EQ(s_alerts, std::vector<std::string>{"bummer"});
    const std::string log = ReadWhole(i_root / "log");
    EXPECT_NE(log.find("### Error opening file for reading"), std::string::npos);
    EXPECT_NE(log.find("Spooler: BIN File"), std::string::npos);
}

TEST_F(SoundFiles, SeveralFilesAreOneStream) {
    const Samples sweep = Sweep(900);
    const auto bytes = BytesOf(sweep);
    std::vector<CFileRef> files;
    for (std::size_t n = 0; n < 3; ++n) {
        const Path path = Song(("part" + std::to_string(n)).c_str());
        WriteWhole(path, {reinterpret_cast<const char*>(bytes.data()) + n * 1200, 1200});
        files.emplace_back(path);
    }
    const auto spoolP = MakeRef<CAS_Multifile>(files);
    std::uint64_t sizeL = 0;
    ASSERT_EQ(spoolP->GetEOF(sizeL), noErr);
    EXPECT_EQ(sizeL, sweep.size());
    EXPECT_EQ(PumpOut(spoolP), sweep);
}

TEST_F(SoundFiles, SurroundIsAsLoudAsStereoAndNeverBeyondFullScale) {
    constexpr double kNone = -90, kCentre = -3.01;
    const struct {
        const char* levelsZ;   // of the six channels, parts of full scale
        double leftDB, rightDB;
    } kCases[] = {
        {"0.5 0 0 0 0 0", 0, kNone},
        {"0 0.5 0 0 0 0", kNone, 0},
        {"0 0 0.5 0 0 0", kCentre, kCentre},
        {"0 0 0 0.5 0 0", kNone, kNone},
        {"0 0 0 0 0.5 0", kCentre, kNone},
        {"0 0 0 0 0 0.5", kNone, kCentre},
        {"0.5 0.5 0 0 0 0", 0, 0},
        {"0.9 0.9 0.9 0.9 0.9 0.9", 8.06, 8.06},   // as cut at full scale; the sum has 12.7
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.levelsZ);
        const Path file = Song("surround.wav");
        std::string channels;
        std::istringstream levels(c.levelsZ);
        for (std::string level; levels >> level;) channels += "|" + level + "*sin(2*PI*441*t)";
        MediaFiles::Run("ffmpeg -nostdin -v error -y -f lavfi -i 'aevalsrc=" + channels.substr(1) +
                        ":c=5.1:s=44100:d=0.5' -c:a pcm_s16le " + file.string());
        CByteSource_File source;
        ASSERT_EQ(source.Open(CFileRef(file)), noErr);
        CMediaAudio audio;
        ASSERT_EQ(audio.Open(source), noErr);
        Samples samples, block(4096);
        for (std::size_t gotL = 0; !Failed(audio.Read(block, gotL));)
            samples.insert(samples.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(gotL));
        ASSERT_EQ(samples.size(), 22050U * 2);
        for (const std::size_t side : {0U, 1U}) {
            double sum = 0;
            for (std::size_t n = side; n < samples.size(); n += 2) {
                sum += std::pow(samples[n] / 32767.0, 2);
                // The tone is above zero in the first half of each 100 frames: what ran over would not be.
                const std::size_t phase = n / 2 % 100;
                if (phase != 0 && phase != 50) {
                    ASSERT_GE(samples[n] * (phase < 50 ? 1 : -1), 0) << n;
                }
            }
            const double level = 10 * std::log10(std::max(1e-12, 2 * sum / 22050 / 0.25));
            EXPECT_NEAR(std::max(level, kNone), side == 0 ? c.leftDB : c.rightDB, 0.5);
        }
    }
}

TEST_F(SoundFiles, LoudnessIsWhatTheFfmpegProgramMeasures) {
    for (const char* nameZ : {"s16.wav", "vbr.mp3", "mono22.wav"}) {
        SCOPED_TRACE(nameZ);
        const Path witness = Song("loudness");
        const std::string mono = std::string(nameZ).starts_with("mono") ? "pan=stereo|c0=c0|c1=c0," : "";
        MediaFiles::Run("ffmpeg -nostdin -hide_banner -i " + Made(nameZ).string() + " -af '" + mono +
                        "ebur128=peak=true' -f null - 2> " + witness.string());
        const std::string told = ReadWhole(witness);
        const std::string summary = told.substr(told.rfind("Summary:"));
        const auto number = [&](const char* labelZ) {
            return ProgramNumber(std::string_view(summary).substr(summary.find(labelZ) + std::strlen(labelZ)));
        };
        CByteSource_File source;
        ASSERT_EQ(source.Open(CFileRef(Made(nameZ))), noErr);
        CMediaAudio audio;
        ASSERT_EQ(audio.Open(source), noErr);
        Loudness loudness;
        ASSERT_EQ(CLoudness::Measure(audio, loudness), noErr);
        EXPECT_NEAR(loudness.lufs, number("I:"), 0.1);
        EXPECT_NEAR(loudness.peakDB, number("Peak:"), 0.3);   // other filters find the peaks between samples
    }
}

TEST(CLoudness, AGainNeverLiftsThePeakOverTheCeiling) {
    EXPECT_DOUBLE_EQ((Loudness{.lufs = -10, .peakDB = 0}.GainDB()), -4);
    EXPECT_DOUBLE_EQ((Loudness{.lufs = -20, .peakDB = -9}.GainDB()), 6);
    EXPECT_DOUBLE_EQ((Loudness{.lufs = -20, .peakDB = -3}.GainDB()), 2);
    CLoudness meter;
    Loudness silence;
    ASSERT_EQ(meter.Add(Samples(88200 * 2)), noErr);
    ASSERT_EQ(meter.Result(silence), noErr);
    EXPECT_EQ(silence.GainDB(), 0);
}

}   // namespace
