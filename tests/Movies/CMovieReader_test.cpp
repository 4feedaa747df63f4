#include "Movies/CMovieReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <random>

#include "Files/MemorySource.h"
#include "Movies/CMoviePainter.h"
#include "Movies/MovieFiles.h"

extern "C" {
#include <libavutil/frame.h>
}

namespace {

std::string ExtensionOf(const std::string& name) { return name.substr(name.rfind('.') + 1); }

/** A movie in memory, and its pictures in full size. */
class Movie {
public:
    explicit Movie(const std::string& name, std::function<bool()> faultB = {})
        : Movie(MovieFiles::Get().Bytes(name), ExtensionOf(name), std::move(faultB)) {}
    Movie(std::string bytes, const std::string& extension, std::function<bool()> faultB = {})
        : i_source(std::move(bytes)) {
        i_reader.SetFault(std::move(faultB));
        i_openErr = i_reader.Open(i_source, extension);
        if (!Failed(i_openErr))
            i_painterP = std::make_unique<CMoviePainter>(OrientationOf(i_reader.File().DisplayMatrix()));
    }
    OSErr Next(MovieFrame& frame) { return i_reader.Next(frame); }
    /** Row by row, without the padding. */
    std::vector<std::uint32_t> Paint(const MovieFrame& frame) {
        const AVFrame& picture = *frame.frameP;
        const PictureSize size =
            ShownSize(picture.width, picture.height, i_reader.File().PixelShape(picture), i_painterP->Orientation());
        COffscreen pixels;
        EXPECT_EQ(i_painterP->Paint(picture, size, pixels), noErr);
        std::vector<std::uint32_t> all;
        for (int y = 0; y < pixels.bounds().Height(); ++y)
            all.insert(all.end(), pixels.Row32(y).begin(), pixels.Row32(y).end());
        return all;
    }

    MemorySource i_source;
    CMovieReader i_reader;
    OSErr i_openErr = noErr;
    std::unique_ptr<CMoviePainter> i_painterP;
};

struct Shot {
    double timeT = 0, endT = 0;
    std::vector<std::uint32_t> pixels;
};

std::vector<Shot> ReadAll(Movie& movie) {
    std::vector<Shot> all;
    MovieFrame frame;
    OSErr err = noErr;
    while (!Failed(err = movie.Next(frame))) all.push_back({frame.timeT, frame.endT, movie.Paint(frame)});
    EXPECT_EQ(err, eofErr);
    return all;
}

int Difference(std::span<const std::uint32_t> a, std::span<const std::uint32_t> b) {
    int most = a.size() == b.size() ? 0 : 999;
    for (std::size_t n = 0; n < std::min(a.size(), b.size()); ++n)
        for (int shift = 0; shift < 24; shift += 8)
            most = std::max(most,
                            std::abs(static_cast<int>(a[n] >> shift & 255U) - static_cast<int>(b[n] >> shift & 255U)));
    return most;
}

class CMovieReaderFiles : public testing::TestWithParam<MovieFile> {
protected:
    void SetUp() override { MovieFiles::Get(); }
};

TEST_P(CMovieReaderFiles, GivesThePicturesAndTimesThatTheFfmpegProgramGives) {
    const std::string name = GetParam().nameZ, raw = MovieFiles::Bytes(name + ".raw");
    const std::vector<double> times = MovieFiles::Times(name);
    Movie movie(name);
    ASSERT_EQ(movie.i_openErr, noErr);
    const MovieFacts& facts = movie.i_reader.Facts();
    const auto pixelsL = static_cast<std::size_t>(facts.width) * static_cast<std::size_t>(facts.height);
    std::vector<std::uint32_t> witness(raw.size() / 4);
    std::memcpy(witness.data(), raw.data(), witness.size() * 4);
    ASSERT_EQ(witness.size() % pixelsL, 0U);

    const std::vector<Shot> shots = ReadAll(movie);
    ASSERT_GT(shots.size(), 8U);
    ASSERT_EQ(shots.size(), witness.size() / pixelsL);
    ASSERT_EQ(shots.size(), times.size());
    int most = 0;
    for (std::size_t n = 0; n < shots.size(); ++n) {
        if (!std::isnan(times[n])) {
            EXPECT_NEAR(shots[n].timeT, times[n], 0.0015) << n;
        }
        EXPECT_EQ(shots[n].pixels[7] >> 24, 255U);   // opaque
        most = std::max(most, Difference(shots[n].pixels, std::span(witness).subspan(n * pixelsL, pixelsL)));
    }
    EXPECT_LE(most, GetParam().within);
    EXPECT_EQ(facts.soundB, name != "silent.mp4");
    EXPECT_EQ(movie.i_reader.Damaged(), 0U);
    if (facts.seconds > 0) {
        EXPECT_NEAR(facts.seconds, shots.back().endT, 0.35);
    }
}

TEST_P(CMovieReaderFiles, IsAfterASeekWhereAStraightReadingIs) {
    Movie straight(GetParam().nameZ), movie(GetParam().nameZ);
    const std::vector<Shot> shots = ReadAll(straight);
    ASSERT_GT(shots.size(), 8U);
    std::mt19937 random(3);
    const double lastT = shots.back().timeT;
    for (int round = 0; round < 25; ++round) {
        double toT = lastT * static_cast<double>(random() % 1100) / 1000 - 0.05;
        if (round % 5 == 4) toT = shots[random() % shots.size()].timeT;   // on the very edge
        SCOPED_TRACE(testing::Message() << "round " << round << " to " << toT);
        std::size_t at = 0;
        while (at + 1 < shots.size() && shots[at + 1].timeT <= toT) ++at;
        ASSERT_EQ(movie.i_reader.Seek(toT), noErr);
        MovieFrame frame;
        for (std::size_t n = at; n < std::min(at + 3, shots.size()); ++n) {
            ASSERT_EQ(movie.Next(frame), noErr);
            EXPECT_NEAR(frame.timeT, shots[n].timeT, 0.0005);
            EXPECT_EQ(Difference(movie.Paint(frame), shots[n].pixels), 0);
        }
        if (at + 3 >= shots.size()) {
            EXPECT_EQ(movie.Next(frame), eofErr);
        }
    }
}

TEST_P(CMovieReaderFiles, OnceTheDiscIsBackASeekIsExact) {
    Movie straight(GetParam().nameZ), movie(GetParam().nameZ);
    const std::vector<Shot> shots = ReadAll(straight);
    const std::size_t middle = shots.size() / 2;
    movie.i_source.i_goneB = true;
    for (const double toT : {shots.back().timeT, 0.0, shots[middle].timeT})
        (void)Failed(movie.i_reader.Seek(toT));   // some find what they want in what was read before
    movie.i_source.i_goneB = false;
    ASSERT_EQ(movie.i_reader.Seek(shots[middle].timeT), noErr);
    MovieFrame frame;
    ASSERT_EQ(movie.Next(frame), noErr);
    EXPECT_NEAR(frame.timeT, shots[middle].timeT, 0.0005);
    EXPECT_EQ(Difference(movie.Paint(frame), shots[middle].pixels), 0);
}

TEST_P(CMovieReaderFiles, HardwareThatFailsLosesNoPicture) {
    Movie straight(GetParam().nameZ);
    const std::vector<Shot> shots = ReadAll(straight);
    // Each asking is a try to get a frame: at the opening, early, and between key pictures.
    for (const int atL : {1, 2, 9, 40, 77}) {
        SCOPED_TRACE(testing::Message() << "fails at " << atL);
        int askedL = 0;
        Movie movie(GetParam().nameZ, [&] { return ++askedL == atL; });
        ASSERT_EQ(movie.i_openErr, noErr);
        const std::vector<Shot> got = ReadAll(movie);
        EXPECT_GE(askedL, std::min(atL, 9));
        ASSERT_EQ(got.size(), shots.size());
        for (std::size_t n = 0; n < got.size(); ++n) {
            EXPECT_NEAR(got[n].timeT, shots[n].timeT, 0.0005) << n;
            EXPECT_EQ(Difference(got[n].pixels, shots[n].pixels), 0) << n;
        }
    }
    // In the middle of a seek, it goes there all the same.
    bool brokenB = false;
    Movie movie(GetParam().nameZ, [&] { return brokenB; });
    MovieFrame frame;
    brokenB = true;
    ASSERT_EQ(movie.i_reader.Seek(shots[shots.size() / 2].timeT), noErr);
    ASSERT_EQ(movie.Next(frame), noErr);
    EXPECT_EQ(Difference(movie.Paint(frame), shots[shots.size() / 2].pixels), 0);
}

INSTANTIATE_TEST_SUITE_P(All, CMovieReaderFiles, testing::ValuesIn(kMovie_Files), [](const auto& one) {
    std::string name = one.param.nameZ;
    std::ranges::replace(name, '.', '_');
    return name;
});

TEST(CMovieReader, ThreeHoursAreSoughtWithAndWithoutAnIndex) {
    for (const char* nameZ : {"long.mp4", "long.avi", "noindex.avi"}) {
        SCOPED_TRACE(nameZ);
        Movie movie{std::string(nameZ)};
        ASSERT_EQ(movie.i_openErr, noErr);
        if (nameZ != std::string("noindex.avi")) {   // whose length is a guess
            EXPECT_NEAR(movie.i_reader.Facts().seconds, 10800, 1);
        }
        MovieFrame frame;
        for (const double toT : {10000.5, 17.0, 9999.2, 10799.9, 3.4}) {
            ASSERT_EQ(movie.i_reader.Seek(toT), noErr);
            ASSERT_EQ(movie.Next(frame), noErr);
            EXPECT_NEAR(frame.timeT, std::floor(toT), 1e-6);
        }
    }
}

TEST(CMovieReader, RecordingsThatWereJoinedGoOnAndAreSought) {
    for (const char* nameZ : {"again.mpg", "ahead.ts"}) {
        SCOPED_TRACE(nameZ);
        Movie straight{std::string(nameZ)};
        const std::vector<Shot> shots = ReadAll(straight);
        ASSERT_EQ(shots.size(), 150U);
        EXPECT_NEAR(shots.back().timeT - shots.front().timeT, 149 * 0.04, 0.001);
        Movie movie{std::string(nameZ)};
        for (const std::size_t at : {130U, 149U, 20U, 76U, 74U, 75U, 3U}) {
            MovieFrame frame;
            ASSERT_EQ(movie.i_reader.Seek(shots[at].timeT + 0.01), noErr);
            ASSERT_EQ(movie.Next(frame), noErr);
            EXPECT_NEAR(frame.timeT, shots[at].timeT, 0.0005) << at;
            EXPECT_EQ(Difference(movie.Paint(frame), shots[at].pixels), 0) << at;
        }
    }
}

TEST(CMovieReader, TimesCountFromASoundThatBeginsLate) {
    for (const char* nameZ : {"latesound.mpg", "latesound.mkv"}) {
        Movie movie{std::string(nameZ)};
        EXPECT_TRUE(movie.i_reader.Facts().soundB);
        MovieFrame frame;
        ASSERT_EQ(movie.Next(frame), noErr);
        EXPECT_NEAR(frame.timeT, -2.5, 0.05) << nameZ;
    }
}

TEST(CMovieReader, BehindTheEndIsTheLastPicture) {
    Movie straight("lastkey.mpg"), movie("lastkey.mpg");
    const std::vector<Shot> shots = ReadAll(straight);
    for (const double behindT : {0.1, 0.5, 0.9, 2.0, 20.0}) {
        MovieFrame frame;
        ASSERT_EQ(movie.i_reader.Seek(shots.back().timeT + behindT), noErr);
        ASSERT_EQ(movie.Next(frame), noErr);
        EXPECT_NEAR(frame.timeT, shots.back().timeT, 0.3) << behindT;   // it has no time of its own
        EXPECT_EQ(Difference(movie.Paint(frame), shots.back().pixels), 0) << behindT;
    }
}

TEST(CMovieReader, ShapeAndTurnAreSeenAsTheyWereMeant) {
    EXPECT_EQ(Movie("wide.mp4").i_reader.Facts().width, 192);
    EXPECT_EQ(Movie("wide.mp4").i_reader.Facts().height, 72);

    Movie turned("turned.mov"), upright("b.mp4");
    EXPECT_EQ(turned.i_reader.Facts().width, 72);
    EXPECT_EQ(turned.i_reader.Facts().height, 96);
    const std::string command = "cd '" + MovieFiles::Folder().string() +
                                "' && ffmpeg -nostdin -v error -y -i turned.mov -frames:v 1 -f rawvideo -pix_fmt bgr0 "
                                "turned.raw";
    MovieFiles::Run(command);
    const std::string raw = MovieFiles::Bytes("turned.raw");
    std::vector<std::uint32_t> witness(raw.size() / 4);
    std::memcpy(witness.data(), raw.data(), witness.size() * 4);
    MovieFrame frame;
    ASSERT_EQ(turned.Next(frame), noErr);
    // ffmpeg turns before it makes colours of it: the halved colour samples lie one row off.
    const std::vector<std::uint32_t> ours = turned.Paint(frame);
    ASSERT_EQ(ours.size(), witness.size());
    double sum = 0;
    for (std::size_t n = 0; n < ours.size(); ++n)
        sum += std::abs(static_cast<int>(ours[n] >> 8 & 255U) - static_cast<int>(witness[n] >> 8 & 255U));
    EXPECT_LT(sum / static_cast<double>(ours.size()), 4.0);
}

TEST(CMovieReader, ASizeThatChangesInTheMiddleGoesOn) {
    Movie movie("grows.ts");
    std::vector<int> widths;
    MovieFrame frame;
    while (!Failed(movie.Next(frame))) {
        if (widths.empty() || widths.back() != frame.frameP->width) widths.push_back(frame.frameP->width);
        EXPECT_EQ(movie.Paint(frame).size(), static_cast<std::size_t>(frame.frameP->width * frame.frameP->height));
    }
    EXPECT_EQ(widths, (std::vector{96, 64}));
    EXPECT_GT(frame.timeT, 1.9);
}

TEST(CMovieReader, CoversAndSoundAloneAreNoMovies) {
    EXPECT_EQ(Movie("cover.mp3").i_openErr, paramErr);
    EXPECT_EQ(Movie("bare.m4a").i_openErr, paramErr);
    EXPECT_EQ(Movie(std::string(), "mp4").i_openErr, paramErr);
    EXPECT_EQ(Movie("#EXTM3U\nfile:///etc/passwd\n", "avi").i_openErr, paramErr);
}

/** Cut and damaged files: pictures or a status, in order, and no more than there are. */
void ReadWhatThereIs(std::string bytes, const std::string& extension, std::size_t most) {
    Movie movie(std::move(bytes), extension);
    if (Failed(movie.i_openErr)) return;
    MovieFrame frame;
    for (const double toT : {-1.0, 1.3, 0.2}) {
        if (toT >= 0 && Failed(movie.i_reader.Seek(toT))) return;
        std::size_t countL = 0;
        double lastT = -HUGE_VAL;
        OSErr err = noErr;
        while (!Failed(err = movie.Next(frame)) && countL <= 2 * most) {
            EXPECT_GT(frame.timeT, lastT);
            lastT = frame.timeT;
            static_cast<void>(movie.Paint(frame));
            ++countL;
        }
        EXPECT_LE(countL, most);
        EXPECT_NE(err, noErr);
    }
}

TEST(CMovieReader, CutFilesGiveWhatTheyHave) {
    for (const char* nameZ : {"b.mp4", "xvid.avi", "vcd.mpg", "open.mkv", "song.wmv"}) {
        SCOPED_TRACE(nameZ);
        const std::string whole = MovieFiles::Get().Bytes(nameZ);
        for (std::size_t n = 0; n < 12; ++n)
            ReadWhatThereIs(whole.substr(0, whole.size() * n / 12), ExtensionOf(nameZ), 60);
    }
    // A cut movie still shows its beginning.
    const std::string whole = MovieFiles::Bytes("vcd.mpg");
    Movie movie(whole.substr(0, whole.size() / 2), "mpg");
    const std::vector<Shot> shots = ReadAll(movie);
    EXPECT_GT(shots.size(), 15U);
}

TEST(CMovieReader, DamagedFilesGiveWhatCanBeRead) {
    std::mt19937 random(11);
    for (const char* nameZ : {"b.mp4", "xvid.avi", "vcd.mpg", "open.mkv", "song.flv", "song.webm"}) {
        SCOPED_TRACE(nameZ);
        const std::string whole = MovieFiles::Get().Bytes(nameZ);
        for (int round = 0; round < 6; ++round) {
            std::string bytes = whole;
            for (int hit = 0; hit < 1 << round; ++hit) bytes[random() % bytes.size()] = static_cast<char>(random());
            ReadWhatThereIs(bytes, ExtensionOf(nameZ), 1000);
        }
    }
}

constexpr struct {
    const char* nameZ;
    std::int32_t a, b, c, d;
    MovieOrientation wanted;
} kTurn_Cases[] = {
    {"upright", 65536, 0, 0, 65536, {1, 0, 0, 1}},
    {"a quarter right", 0, 65536, -65536, 0, {0, 1, -1, 0}},
    {"upside down", -65536, 0, 0, -65536, {-1, 0, 0, -1}},
    {"a quarter left", 0, -65536, 65536, 0, {0, -1, 1, 0}},
    {"a mirror", -65536, 0, 0, 65536, {-1, 0, 0, 1}},
    {"nearly upright", 65000, 4000, -4000, 65000, {1, 0, 0, 1}},
    {"nothing at all", 0, 0, 0, 0, {1, 0, 0, 1}},
    {"the least number", INT32_MIN, 0, 0, INT32_MIN, {-1, 0, 0, -1}},
};

TEST(MovieOrientation, IsReadFromTheMatrix) {
    for (const auto& c : kTurn_Cases) {
        const std::int32_t matrix[9] = {c.a, c.b, 0, c.c, c.d, 0, 0, 0, 1 << 30};
        EXPECT_EQ(OrientationOf(matrix), c.wanted) << c.nameZ;
    }
    EXPECT_EQ(ShownSize(720, 576, 16.0 / 15, {}), (PictureSize{768, 576}));
    EXPECT_EQ(ShownSize(720, 480, 8.0 / 9, {}), (PictureSize{720, 540}));
    EXPECT_EQ(ShownSize(720, 480, 1, {0, 1, -1, 0}), (PictureSize{480, 720}));
    EXPECT_EQ(ShownSize(30000, 30000, 10, {}), (PictureSize{32767, 30000}));
}

}   // namespace
