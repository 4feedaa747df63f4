#include "Audio/AllocationCounter.h"
#include "Audio/CAS_Adapt_Progress.h"
#include "Audio/ChainTest.h"

namespace {
class CAS_Adapt_test : public ChainTest {};
using CAS_MemoryChain = CAS_Adapt_FtoI<CAS_Adapt_PitchTempoVolume<CAS_Adapt_ItoF<CAS_Memory>>>;
}   // namespace

TEST_F(CAS_Adapt_test, TheRingGivesTheFloatsOfTheSource) {
    const Samples song = RandomSamples(200000);
    const Ref<CAS_AudioRing> ringP = Ring(song);
    EXPECT_EQ(ringP->TrackedName(),
              "Spooler: Ring -> Adapter: Integer to Float -> Adapter: Pitch, Tempo, Volume"
              " -> Adapter: Float to Integer");
    OpenForRead(*ringP);
    EXPECT_EQ(ReadAll<float>(*ringP, 4096), AsSound(song));
    EXPECT_EQ(ringP->GetPos(), song.size());
    EXPECT_EQ(ringP->GetTotal(), song.size());
    EXPECT_EQ(AsSamples(AsSound(song)), song);
}

TEST_F(CAS_Adapt_test, ASongEndsWhenItsSourceIsUsedUp) {
    constexpr std::size_t kFrames = 100001;
    const Samples song = AsSamples(Tone(440, kFrames));
    for (const double tempo : {0.8, 1.1, 1.25, 3.0}) {
        const Ref<CAS_AudioRing> ringP = Ring(song);
        ASSERT_EQ(ringP->SetPitchTempo(2.9, tempo), noErr);   // the pitch is cut to 2
        EXPECT_EQ(ringP->TimePitch().Pitch(), 2);
        OpenForRead(*ringP);
        Sound all, part(4096);
        std::uint64_t beforeL = 0;
        for (OSErr err = noErr;;) {
            std::size_t gotL = 0;
            err = ringP->Read(std::as_writable_bytes(std::span(part)), gotL);
            if (Failed(err)) {
                EXPECT_EQ(err, eofErr);
                break;
            }
            all.insert(all.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(gotL / sizeof(float)));
            // The position is the source's, of what was given and not of what was taken.
            const double placeF = static_cast<double>(all.size() / 2) * tempo;
            EXPECT_NEAR(static_cast<double>(ringP->GetPos() / 2), std::min<double>(placeF, kFrames), tempo + 1);
            EXPECT_GE(ringP->GetPos(), beforeL);
            beforeL = ringP->GetPos();
        }
        EXPECT_EQ(all.size() / 2, static_cast<std::size_t>(std::ceil(kFrames / tempo)));
        EXPECT_EQ(ringP->GetPos(), song.size());
        EXPECT_EQ(ringP->GetProgress(), 1.0);
        EXPECT_NEAR(MeasureHertz(all, 4000, all.size() / 2 - 4000), 493.88, 1);
    }
}

TEST_F(CAS_Adapt_test, ASeekBeginsAnewAtEveryTempo) {
    const Samples song = RandomSamples(60000);
    const Ref<CAS_AudioRing> ringP = Ring(song);
    OpenForRead(*ringP);
    ASSERT_EQ(ringP->SetPitchTempo(1, 1.2), noErr);
    Sound part(20000);
    std::size_t gotL = 0;
    ASSERT_EQ(ringP->Read(std::as_writable_bytes(std::span(part)), gotL), noErr);
    ASSERT_EQ(ringP->Seek(0.5), noErr);
    ASSERT_EQ(ringP->SetPitchTempo(0, 1.0), noErr);
    EXPECT_EQ(ringP->GetPos(), song.size() / 2);
    const Sound wanted = AsSound(song);
    EXPECT_EQ(ReadAll<float>(*ringP, 1000), Sound(wanted.begin() + 60000, wanted.end()));
    ASSERT_EQ(ringP->Seek(0.0), noErr);   // also after the end
    EXPECT_EQ(ReadAll<float>(*ringP, 7000), wanted);
    EXPECT_EQ(ringP->GetPos(), song.size());
}

TEST_F(CAS_Adapt_test, AnEmptySongEndsAtOnce) {
    const Ref<CAS_AudioRing> ringP = Ring({});
    OpenForRead(*ringP);
    EXPECT_TRUE(ReadAll<float>(*ringP, 100).empty());
}

TEST_F(CAS_Adapt_test, AFileIsReadAsFloatsInsideAndIntegersOutside) {
    const Samples song = RandomSamples(30000);
    const auto chainP = MakeRef<CAS_MemoryChain>(BytesOf(song));
    OpenForRead(*chainP);
    EXPECT_EQ(ReadAll<std::int16_t>(*chainP, 3000), song);
    EXPECT_EQ(chainP->GetPos(), song.size());
    ASSERT_EQ(chainP->Seek(0), noErr);
    chainP->Volume().SetVocalMode(VocalMode::kVocalCut);
    chainP->Volume().SetVolume(0.5F);
    const Sound in = AsSound(song);
    Sound cut(in.size());
    for (std::size_t n = 0; n < in.size(); n += 2) cut[n] = cut[n + 1] = (in[n + 1] - in[n]) * 0.5F;
    EXPECT_EQ(ReadAll<std::int16_t>(*chainP, 50), AsSamples(cut));
    // More than an adapter takes at once is given in parts.
    ASSERT_EQ(chainP->Seek(0), noErr);
    EXPECT_EQ(ReadAll<std::int16_t>(*chainP, 40000).size(), song.size());
}

TEST_F(CAS_Adapt_test, LayersThatAreOffPass) {
    const Samples song = RandomSamples(5000);
    const auto chainP = MakeRef<CAS_MemoryChain>(BytesOf(song));
    chainP->SetFloatToInteger(false);
    OpenForRead(*chainP);
    EXPECT_EQ(ReadAll<float>(*chainP, 3000), AsSound(song));
    const auto rawP = MakeRef<CAS_Adapt_ItoF<CAS_Memory>>(BytesOf(song));
    rawP->SetIntegerToFloat(false);
    OpenForRead(*rawP);
    EXPECT_EQ(ReadAll<std::int16_t>(*rawP, 3000), song);
}

TEST_F(CAS_Adapt_test, ACueSeesTheSongAsItIs) {
    const Samples song = RandomSamples(5000);
    const auto chainP = MakeRef<CAS_MemoryChain>(BytesOf(song));
    chainP->Volume().SetMute(true);
    ASSERT_EQ(chainP->SetPitchTempo(3, 1.5), noErr);
    OpenForRead(*chainP);
    chainP->SetCue(true);
    EXPECT_EQ(ReadAll<float>(*chainP, 2048), AsSound(song));
    EXPECT_EQ(chainP->GetPos(), song.size());
    chainP->SetCue(false);
    ASSERT_EQ(chainP->Seek(0), noErr);
    EXPECT_EQ(ReadAll<std::int16_t>(*chainP, 2048), Samples((3334) * 2, 0));
}

TEST_F(CAS_Adapt_test, TheTaskListSeesEachHundredthOnce) {
    const auto spoolP = MakeRef<CAS_Adapt_Progress<CAS_Memory>>(BytesOf(RandomSamples(10000)));
    OpenForRead(*spoolP);
    spoolP->OpenTask("Reading");
    EXPECT_EQ(ReadAll<std::int16_t>(*spoolP, 20).size(), 20000U);
    EXPECT_NE(spoolP->TrackedName().find(" -> Adapter: Progress"), std::string::npos);
    EXPECT_TRUE(RunUntil([&] { return spoolP->RetainCount() == 1; }));   // all 101 calls were made
    std::string wanted;
    for (int n = 0; n <= 100; ++n) wanted += std::to_string(n) + " of 100\n";
    EXPECT_EQ(i_host.i_tasks.Get(), wanted);
}

TEST_F(CAS_Adapt_test, TheReaderOfTheRingTakesNothingFromTheHeap) {
    const Ref<CAS_AudioRing> ringP = Ring(RandomSamples(44100 * 10));
    OpenForRead(*ringP);
    Sound part(4096);
    std::size_t countedL = 0;
    std::mt19937 random(7);
    for (int n = 0; n < 300; ++n) {
        ASSERT_EQ(
            ringP->SetPitchTempo(static_cast<double>(random() % 5) - 2, 0.8 + static_cast<double>(random() % 5) / 10),
            noErr);
        ringP->Volume().SetVolume(static_cast<float>(random() % 10) / 10);
        const AllocationCounter counter;
        std::size_t gotL = 0;
        if (Failed(ringP->Read(std::as_writable_bytes(std::span(part)), gotL))) break;
        countedL += counter.Count();
    }
    EXPECT_EQ(countedL, 0U);
}
