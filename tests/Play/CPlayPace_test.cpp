#include "Play/CPlayPace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <random>

#include "Graphics/CGraphicsClock.h"

namespace {

constexpr double kRate = 44100, kPer300th = 147;
constexpr std::uint64_t kBlock = 2048;
constexpr double kTick_T = 1e-3;

/** A song, its player and its output, moved by hand: what is heard at each moment stands in a plain list of blocks. */
class Show {
public:
    explicit Show(std::size_t blocksL, double ppm = 0, std::uint64_t bite = 1)
        : i_blocksL(blocksL),
          i_rate(kRate * (1 + ppm * 1e-6)),
          i_bite(bite),
          i_soundP(std::make_shared<Sound>(*this)),
          i_pace(i_clock) {
        i_clock.Start(0);
        i_pace.SetSound(i_soundP);
        i_pace.SetWake([this] {
            if (std::exchange(i_restsB, false)) i_dueT = kWoken_T;   // at once, and no tick is made up
        });
        Fill();
    }
    ~Show() { i_pace.Detach(); }

    /** The song begins there, and nothing was given to the output yet. */
    void BeginDryAt(long start300) {
        i_clock.Seek(start300);
        i_place = static_cast<double>(start300) * kPer300th;
        i_blocks.clear();
        i_givenL = 0;
        i_dryB = true;
    }

    void Play() {
        i_pace.Run();
        i_playsB = true;
    }
    void Pause() {
        i_playsB = false;
        Fill();
        i_pace.Pause();
    }
    void Tempo(double tempo) {
        i_tempo = tempo;
        i_pace.SetTempo(tempo);
    }
    /** The sound comes `lateT` after the order. */
    void Seek(long target300, double lateT) {
        i_pace.BeginSeek(target300);
        i_target300 = target300;
        i_silentT = lateT;
        i_seekingB = true;
    }
    /** Nothing is given to the output any more, which plays what it has. */
    void SetDry(bool dryB) { i_dryB = dryB; }
    void Advance(double seconds) {
        for (double leftT = seconds; leftT > 0; leftT -= kTick_T) Step();
    }
    [[nodiscard]] double Heard300() const { return PlaceAt(Played()) / kPer300th; }
    [[nodiscard]] double Clock300() const { return static_cast<double>(i_clock.Now()); }
    /** Furthest that picture and sound were apart while one place of the song alone was in the output. */
    [[nodiscard]] double Worst300() const { return i_worst300; }
    /** The thread of the clock has nothing to do. */
    [[nodiscard]] bool Rests() const { return i_restsB; }
    [[nodiscard]] bool IsOver() const { return i_overB; }
    void End() { i_overB = true; }

private:
    struct Block {
        std::uint64_t startL;
        double from, to;   // frames of the song
        bool newPlaceB;    // the first one behind a seek
    };
    class Sound final : public CHeardSound {
    public:
        explicit Sound(const Show& show) : i_show(show) {}
        std::uint64_t FramesPlayed() const override { return i_show.Played(); }
        std::uint64_t FramesGiven() const override { return i_show.i_givenL; }
        double PlaceOf(std::uint64_t outputL) const override { return i_show.PlaceAt(outputL) / kPer300th; }
        bool IsOver() const override { return i_show.i_overB; }

    private:
        const Show& i_show;
    };

    [[nodiscard]] std::uint64_t Played() const {
        return static_cast<std::uint64_t>(i_playedF) / i_bite * i_bite;   // a device takes whole bites
    }
    [[nodiscard]] double PlaceAt(std::uint64_t outputL) const {
        for (auto it = i_blocks.rbegin(); it != i_blocks.rend(); ++it)
            if (it->startL <= outputL)
                return it->from + (it->to - it->from) * std::min(1.0, static_cast<double>(outputL - it->startL) /
                                                                          static_cast<double>(kBlock));
        return 0;
    }
    void Fill() {
        while (!i_dryB && i_givenL < Played() + i_blocksL * kBlock) {
            const bool soundB = i_playsB && !i_seekingB && !i_overB;
            const double to = i_place + (soundB ? static_cast<double>(kBlock) * i_tempo : 0);
            i_blocks.push_back({i_givenL, i_place, to, std::exchange(i_freshB, false)});
            i_place = to;
            i_givenL += kBlock;
            if (i_blocks.size() > 64) i_blocks.pop_front();
        }
    }
    void Step() {
        i_playedF = std::min(i_playedF + i_rate * kTick_T, static_cast<double>(i_givenL));
        if (i_seekingB && (i_silentT -= kTick_T) <= 0) {
            i_seekingB = false;
            i_place = static_cast<double>(i_target300) * kPer300th;
            i_freshB = true;
            i_foreignToL = i_givenL;
            i_pace.EndSeek();
        }
        Fill();
        for (i_dueT += kTick_T; !i_restsB && i_dueT >= static_cast<double>(i_pace.Period()) * 1e-6;) {
            i_dueT = i_dueT >= kWoken_T ? 0 : i_dueT - static_cast<double>(i_pace.Period()) * 1e-6;
            i_restsB = !i_pace.Tick();
        }
        if (!i_seekingB && Played() >= i_foreignToL)
            i_worst300 = std::max(i_worst300, std::abs(Heard300() - Clock300()));
    }

    static constexpr double kWoken_T = 10;
    bool i_restsB = false;
    const std::size_t i_blocksL;
    const double i_rate;
    const std::uint64_t i_bite;
    CGraphicsClock i_clock;
    std::deque<Block> i_blocks;
    std::uint64_t i_givenL = 0, i_foreignToL = 0;
    double i_playedF = 0, i_place = 0, i_tempo = 1, i_dueT = 0, i_silentT = 0, i_worst300 = 0;
    long i_target300 = 0;
    bool i_playsB = false, i_seekingB = false, i_freshB = false, i_overB = false, i_dryB = false;
    std::shared_ptr<Sound> i_soundP;
    CPlayPace i_pace;
};

constexpr double kWithin_300ths = 20;   // 1/15 s

TEST(CPlayPace, AStartWhoseSoundIsNotGivenYetStandsWhereItBegins) {
    Show show(5);
    show.BeginDryAt(600);
    show.Play();
    show.Advance(0.5);
    EXPECT_EQ(show.Clock300(), 600);
    show.SetDry(false);
    show.Advance(1);
    EXPECT_GT(show.Clock300(), 600);
    EXPECT_NEAR(show.Clock300(), show.Heard300(), kWithin_300ths);
}

/** What the output knows then is the place before the seek. */
TEST(CPlayPace, ASeekWhoseSoundIsNotGivenYetStandsWhereItWent) {
    Show show(5);
    show.Play();
    show.Advance(60);
    show.SetDry(true);
    show.Advance(1);   // it has played all of it
    show.Seek(3000, 0.1);
    show.Advance(0.5);
    EXPECT_EQ(show.Clock300(), 3000);
    show.SetDry(false);
    show.Advance(1);
    EXPECT_GT(show.Clock300(), 3000);
    EXPECT_NEAR(show.Clock300(), show.Heard300(), kWithin_300ths);
}

TEST(CPlayPace, StartsWithTheFirstFrameThatIsHeard) {
    for (const std::size_t blocksL : {2UL, 5UL, 25UL}) {
        SCOPED_TRACE(blocksL);
        Show show(blocksL);
        show.Advance(0.1);   // the device runs, in silence
        EXPECT_EQ(show.Clock300(), 0);
        show.Play();
        const double ahead = static_cast<double>(blocksL * kBlock) / kRate;
        show.Advance(ahead - 0.06);
        EXPECT_EQ(show.Clock300(), 0);
        show.Advance(1.06);
        EXPECT_NEAR(show.Clock300(), 300, 6 + 300 * static_cast<double>(kBlock) / kRate);
        EXPECT_LE(show.Worst300(), 6);
    }
}

TEST(CPlayPace, APauseEndsWithWhatIsHeardAndGoesOnWithIt) {
    Show show(5);
    show.Play();
    show.Advance(3);
    show.Pause();
    const double atPause = show.Clock300();
    show.Advance(1);
    EXPECT_GT(show.Clock300(), atPause + 50);   // the blocks that wait are still heard
    EXPECT_NEAR(show.Clock300(), show.Heard300(), 5);
    const double stands = show.Clock300();
    show.Advance(5);
    EXPECT_EQ(show.Clock300(), stands);
    show.Play();
    show.Advance(0.1);
    EXPECT_EQ(show.Clock300(), stands);
    show.Advance(3);
    EXPECT_LE(show.Worst300(), 6);
}

TEST(CPlayPace, ASeekStandsAtItsPlaceUntilItIsHeard) {
    Show show(5);
    show.Play();
    show.Advance(2);
    show.Seek(9000, 0.4);
    EXPECT_EQ(show.Clock300(), 9000);
    show.Advance(0.6);   // 0.4 s to find it, and blocks that wait
    EXPECT_EQ(show.Clock300(), 9000);
    show.Advance(2);
    EXPECT_NEAR(show.Clock300(), show.Heard300(), 6);
    show.Pause();
    show.Seek(100, 0.2);
    show.Advance(1);
    EXPECT_EQ(show.Clock300(), 100);
    show.Play();
    show.Advance(1);
    EXPECT_NEAR(show.Clock300(), show.Heard300(), 6);
    EXPECT_LE(show.Worst300(), kWithin_300ths);
}

TEST(CPlayPace, SoundThatIsOverLetsThePictureRunToItsEnd) {
    Show show(5);
    show.Play();
    show.Advance(1);
    show.End();
    const double at = show.Clock300();
    show.Advance(2);
    EXPECT_NEAR(show.Clock300(), at + 600, 8);
    show.Pause();
    show.Advance(1);
    const double stands = show.Clock300();
    show.Advance(1.5);
    EXPECT_TRUE(show.Rests());
    EXPECT_EQ(show.Clock300(), stands);
    show.Play();
    show.Advance(1);
    EXPECT_NEAR(show.Clock300(), stands + 300, 8);
}

TEST(CPlayPace, WithoutSoundItRunsAtOnce) {
    CGraphicsClock clock;
    clock.Start(0);
    CPlayPace pace(clock);
    EXPECT_FALSE(pace.Tick());   // there is nothing to do yet
    EXPECT_EQ(clock.Now(), 0);
    pace.Run();
    pace.Tick();
    EXPECT_EQ(clock.Now(), 4);
    pace.Pause();
    pace.Tick();
    EXPECT_EQ(clock.Now(), 4);
    pace.Detach();
    pace.Run();
    pace.Tick();
    EXPECT_EQ(clock.Now(), 4);
}

TEST(CPlayPace, ThePeriodIsThatOfASectorCutOff) {
    const struct {
        double tempo;
        long microseconds;
    } cases[] = {{1.0, 13333}, {0.8, 16666}, {1.25, 10666}, {0.5, 26666}, {2.0, 6666}};
    for (const auto& c : cases) EXPECT_EQ(SectorMicroseconds(c.tempo), c.microseconds) << c.tempo;
}

/** Ten minutes of a restless evening at one tempo, then one of changing tempos: packets and samples stay together. */
TEST(CPlayPace, PictureAndSoundStayTogetherThroughPausesSeeksAndTempos) {
    for (const double tempo : {0.8, 1.0, 1.25, 0.0})
        for (const std::uint64_t bite : {1UL, 1024UL}) {
            SCOPED_TRACE(testing::Message() << "tempo " << tempo << ", bites of " << bite);
            std::mt19937 random(7);
            const auto below = [&](double most) { return std::uniform_real_distribution(0.0, most)(random); };
            Show show(5, 0, bite);
            show.Tempo(tempo > 0 ? tempo : 1);
            show.Play();
            for (double t = 0; t < 600;) {
                const double stretch = 1 + below(20);
                show.Advance(stretch);
                t += stretch;
                switch (random() % 3) {
                    case 0:
                        show.Pause();
                        show.Advance(below(1));
                        show.Play();
                        break;
                    case 1:
                        show.Seek(static_cast<long>(below(60000)), below(0.5));
                        break;
                    default:
                        if (tempo == 0) show.Tempo(0.8 + below(0.45));
                }
            }
            EXPECT_LE(show.Worst300(), kWithin_300ths);
        }
}

}   // namespace
