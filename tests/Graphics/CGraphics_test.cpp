#include "Graphics/CGraphics.h"

#include "Core/Assertions.h"
#include "Core/TempFolder.h"
#include "Graphics/CGraphicsClock.h"
#include "Graphics/CGraphicsOverlay.h"
#include "Graphics/CGraphicsPorts.h"
#include "Graphics/CGraphicsSong.h"
#include "Graphics/CHq4x.h"
#include "Graphics/CMediaOverlay.h"
#include "Graphics/CSubCodeStream_Memory.h"
#include "Graphics/PlayNext.h"
#include "Graphics/PortTest.h"
#include "Graphics/SlowCDG.h"

namespace {
using Bytes = std::vector<std::uint8_t>;

struct ScriptedMovie final : CGraphicsMovie {
    bool endedB = false;
    int idlesL = 0;
    const CPixels* pictureP = nullptr;
    const CPixels* Picture() const override { return pictureP; }
    bool IsEnded() const override { return endedB; }
    bool Idle() override { return ++idlesL == 0; }
};
struct BrokenStream final : CSubCodeStream {
    SubCodeRead Read(std::span<std::uint8_t>) override { return {0, ioErr}; }
    std::size_t Position() const override { return 0; }
    OSErr Rewind() override { return noErr; }
};
struct Song final : CGraphicsSong {
    CGraphicsClock clock;
    CSubCodeStream* streamP = nullptr;
    ScriptedMovie movie;
    bool pausedB = false, atEndB = false, audioDoneB = false, videoB = false, changingB = false, quittingB = false;
    long slipL = 0;
    int nextL = 0, deferredL = 0, drawnL = 0;
    OSErr stopped = noErr;

    std::string Name() const override { return "Any Song"; }
    CGraphicsClock& Clock() override { return clock; }
    CSubCodeStream* Stream() override { return streamP; }
    bool IsPaused() const override { return pausedB; }
    bool IsAtEnd() const override { return atEndB; }
    bool IsAudioFinished() const override { return audioDoneB; }
    bool IsVideoSong() const override { return videoB; }
    CGraphicsMovie* Movie() override { return videoB ? &movie : nullptr; }
    std::uint16_t ChannelMask() const override { return 0xFFFF; }
    long SyncSlip300() const override { return slipL; }
    bool IsChangingSong() const override { return changingB; }
    bool IsQuitting() const override { return quittingB; }
    void PostPlayNext() override { ++nextL; }
    void DeferPlayNext() override { ++deferredL; }
    void StopAfter(OSErr err) override { stopped = err; }
    void NoteDrawn(double) override { ++drawnL; }
};
struct Stage {
    Song song;
    Screen screen{0};
    CSubCodeStream_Memory stream;
    std::vector<SubCodePacket> packets;
    std::unique_ptr<CGraphics> graphics;

    explicit Stage(std::size_t countL, std::size_t bytesShort = 0) {
        std::mt19937 random(9);
        Bytes bytes;
        for (std::size_t n = 0; n < countL; ++n) {
            packets.push_back(RandomPacket(random));
            bytes.insert(bytes.end(), packets.back().bytes.begin(), packets.back().bytes.end());
        }
        bytes.resize(bytes.size() - bytesShort);
        stream = CSubCodeStream_Memory(bytes);
        song.streamP = &stream;
        OSErr err = noErr;
        graphics = CGraphics::Make(0xFFFF, {}, err);
        graphics->SetSong(song);
        screen.port.Add(*graphics->Overlay(), 0);
        screen.refreshesL = 0;
    }
    std::vector<std::uint32_t> Shown() const {
        std::vector<std::uint32_t> shown;
        for (int y = 0; y < 216; ++y)
            for (const Pixel32 pixel : graphics->TrueColor().Row32(y)) shown.push_back(pixel);
        return shown;
    }
    std::vector<std::uint32_t> TruePicture(std::size_t countL) const {
        SlowCDG slow;
        for (std::size_t n = 0; n < std::min(countL, packets.size()); ++n) slow.Run(packets[n]);
        return slow.Shown();
    }
};

TEST(CSubCodeStream_Memory, AFileIsReadInPartsAndGivenUpBetweenThem) {
    const TempFolder folder;
    const std::filesystem::path file = folder.Path() / "a.cdg";
    std::string bytes(600'000, '\0');
    for (std::size_t n = 0; n < bytes.size(); ++n)
        bytes[n] = static_cast<char>(n * 31 + n / 977);   // no part is like another
    WriteWhole(file, bytes);
    CSubCodeStream_Memory stream;
    ASSERT_EQ(stream.LoadFile(file), noErr);
    EXPECT_TRUE(std::ranges::equal(stream.Bytes(), bytes, {}, {}, [](char c) { return static_cast<std::uint8_t>(c); }));
    int askedL = 0;
    EXPECT_EQ(stream.LoadFile(file, [&] { return ++askedL == 2; }), abortErr);
    EXPECT_EQ(stream.LengthUnits(), 150'000U);   // what it had
}

TEST(CGraphics, FollowsTheClockForwardsAndBack) {
    Stage stage(900);
    for (int n = 0; n < 40; ++n) {
        stage.song.clock.AddPending(4);
        stage.song.clock.AddPending(4);
        stage.graphics->Tick(false);
        ASSERT_EQ(stage.stream.Position(), static_cast<std::size_t>(n + 1) * 8 * 6);
        ASSERT_EQ(stage.screen.refreshesL, n + 1);   // once a tick
    }
    EXPECT_EQ(stage.Shown(), stage.TruePicture(320));
    stage.graphics->Tick(false);
    EXPECT_EQ(stage.song.drawnL, 40);   // nothing due, nothing done
    for (const int target : {800, 100, 101, 450, 0, 7}) {
        if (static_cast<std::size_t>(target) < stage.stream.Position() / 6) static_cast<void>(stage.stream.Rewind());
        stage.song.clock.Seek(target);
        stage.graphics->Tick(false);
        ASSERT_EQ(stage.Shown(), stage.TruePicture(static_cast<std::size_t>(target))) << target;
    }
}

TEST(CGraphics, AWayBackWithNothingDueIsBlackAtOnce) {
    Stage stage(900);
    stage.song.clock.Seek(600);
    stage.graphics->Tick(false);
    static_cast<void>(stage.stream.Rewind());
    stage.song.slipL = -3000;   // ten seconds until the first packet falls due
    stage.song.clock.Seek(100);
    const int refreshesL = stage.screen.refreshesL;
    stage.graphics->Tick(false);
    EXPECT_EQ(stage.Shown(), stage.TruePicture(0));
    EXPECT_EQ(stage.screen.refreshesL, refreshesL + 1);
}

TEST(CGraphics, HoldsPacketsBackByTheSlips) {
    const struct {
        double sync;
        long slipL;
        std::int64_t pending;
        std::size_t packetsL;
    } cases[] = {{0, 0, 4, 4}, {0, -3, 4, 1}, {0, -4, 4, 0}, {0.01, 0, 4, 7}, {-0.005, 0, 4, 3}, {0, 5, 4, 9}};
    for (const auto& c : cases) {
        Stage stage(50);
        stage.song.clock.Start(c.sync);
        stage.song.slipL = c.slipL;
        stage.song.clock.AddPending(c.pending);
        stage.graphics->Tick(false);
        EXPECT_EQ(stage.stream.Position() / 6, c.packetsL) << c.sync << ' ' << c.slipL;
        EXPECT_EQ(stage.song.clock.Now(), c.pending);
    }
    CGraphicsClock clock;
    clock.AddPending(4);
    EXPECT_EQ(clock.PacketsDue(0, 24), 0);
}

TEST(CGraphics, OnePortIsDrawnAloneAndSeesThroughTheBorder) {
    Stage stage(0);
    SubCodePacket colors, border;
    colors.bytes = {9, 30, 0, 0, 0, 0, 0x3C, 0};   // colour 1 is red
    border.bytes = {9, 2, 0, 0, 1};
    const std::vector packets{colors, border};
    stage.graphics->ExecutePackets(packets, true, true);
    EXPECT_EQ(stage.screen.paintsL, 1);
    const int refreshesL = stage.screen.refreshesL;
    const struct {
        float opacityF;
        bool transparentB, leftB;
    } cases[] = {{1, false, false}, {1, true, true}, {0.5F, false, true}, {0.5F, true, true}};
    for (const auto& c : cases) {
        Screen other(9);
        other.port.SetOpacity(c.opacityF);
        other.port.SetTransparent(c.transparentB);
        stage.graphics->RenderFor(other.port);
        EXPECT_EQ(other.pictureP, &stage.graphics->TrueColor());
        EXPECT_EQ(other.left.has_value(), c.leftB) << c.opacityF << c.transparentB;
        if (other.left) {
            EXPECT_EQ(*other.left, (RGBColor{0xFFFF, 0, 0}));
        }
    }
    EXPECT_EQ(stage.screen.refreshesL, refreshesL) << "the others were not asked";
}

TEST(CGraphics, LiesOverItsLyricsAndLeavesByItself) {
    Stage stage(0);
    CGraphicsPorts ports;
    Screen video(0), preview(1), second(9);
    for (Screen* const screenP : {&video, &preview, &second}) ports.Enter(screenP->port);
    CMediaOverlay media(stage.song, [](CGraphicsPort&) {});
    ASSERT_EQ(ports.WireUp(&media, stage.graphics->Overlay()), noErr);
    for (const Screen* const screenP : {&video, &preview, &second}) {
        EXPECT_EQ(screenP->port.OverlayNames(), (std::vector<std::string>{"mediastream", "song: Any Song"}));
        EXPECT_EQ(screenP->port.Under(), 1);
        EXPECT_EQ(screenP->port.Source(), stage.graphics->Overlay());
    }
    stage.graphics.reset();
    ports.Unwire(media);
    for (const Screen* const screenP : {&video, &preview, &second}) {
        EXPECT_TRUE(screenP->port.OverlayNames().empty());
        EXPECT_EQ(screenP->port.Under(), 0);
    }
}

TEST(CGraphics, ShowsTheUpscaledPlaneOrTheMoviesOwn) {
    std::mt19937 random(3);
    std::vector<SubCodePacket> packets;
    for (int n = 0; n < 400; ++n) packets.push_back(RandomPacket(random));
    Song song;
    Screen screen{0};
    OSErr err = noErr;
    const auto graphics = CGraphics::Make(
        0xFFFF,
        [filter = std::make_shared<CHq4x>()](const CPixels& from, CPixels& to) { return filter->Scale(from, to); },
        err);
    graphics->SetSong(song);
    screen.port.Add(*graphics->Overlay(), 0);
    graphics->ExecutePackets(packets, true, false);
    EXPECT_EQ(screen.paintsL, 0);
    screen.port.Redraw();
    COffscreen expected;
    ASSERT_EQ(expected.Create(MakeRect(0, 0, 1200, 864), 32), noErr);
    ASSERT_EQ(CHq4x().Scale(graphics->TrueColor(), expected), noErr);
    ASSERT_EQ(screen.pictureP->bounds(), expected.bounds());
    for (int y = 0; y < 864; ++y) ASSERT_TRUE(std::ranges::equal(screen.pictureP->Row32(y), expected.Row32(y))) << y;

    song.videoB = true;
    song.movie.pictureP = &expected;
    screen.port.Redraw();
    EXPECT_EQ(screen.pictureP, &expected);
    EXPECT_EQ(screen.port.Frame(), expected.bounds());
}

TEST(CGraphics, ReplaysFromBlackAfterARewind) {
    Stage stage(0);
    SubCodePacket tile, border, colors;   // none of them hides what was there before
    tile.bytes = {9, 38, 0, 0, 0, 1, 5, 5, 63};
    border.bytes = {9, 2, 0, 0, 1};
    colors.bytes = {9, 30, 0, 0, 0, 0, 0x3C, 0};
    stage.packets = {tile, border, colors, colors};
    stage.stream = CSubCodeStream_Memory({stage.packets[0].bytes.data(), stage.packets.size() * 24});
    for (const std::size_t target : {4U, 1U, 3U, 2U}) {
        static_cast<void>(stage.stream.Rewind());
        stage.song.clock.Seek(static_cast<std::int64_t>(target));
        stage.graphics->Tick(false);
        ASSERT_EQ(stage.Shown(), stage.TruePicture(target)) << target;
    }
}

TEST(CGraphics, AdvancesOverManyPartsOfAStream) {
    Stage stage(20000, 4);   // three parts, the last packet short of a unit
    ASSERT_EQ(stage.graphics->Advance(&stage.stream, 30000, true, false), noErr);
    EXPECT_EQ(stage.screen.refreshesL, 1);
    EXPECT_EQ(stage.Shown(), stage.TruePicture(20000));   // what the cut took was parity
    EXPECT_EQ(stage.graphics->Advance(&stage.stream, 1, true, false), eofErr);
}

TEST(CGraphics, ReadsStreamsCutAtEveryUnit) {
    for (std::size_t shortL = 0; shortL <= 48; ++shortL) {
        Stage stage(2, shortL);
        std::vector<SubCodePacket> packets(2 + CGraphics::kShortRead_Packets);
        std::size_t countL = 2;
        const OSErr err = stage.graphics->ReadSubCodes(&stage.stream, packets, countL);
        const std::size_t unitsL = (48 - shortL) / 4;
        EXPECT_EQ(err, unitsL == 0 ? eofErr : noErr);
        EXPECT_EQ(countL, unitsL / 6 + (unitsL % 6 != 0 ? 4 : 0)) << unitsL;   // 7 units count 5
    }
}

TEST(CGraphics, EndsOnceAndRevivesBySeeking) {
    Stage stage(10);
    stage.song.clock.AddPending(40);
    stage.graphics->Tick(false);
    stage.graphics->Tick(false);
    EXPECT_TRUE(stage.song.clock.StreamEnded());
    stage.graphics->Tick(false);
    EXPECT_EQ(stage.song.nextL, 0);   // the sound plays on
    stage.song.audioDoneB = true;
    stage.song.changingB = true;
    stage.graphics->Tick(false);
    EXPECT_EQ(stage.song.nextL, 0);
    stage.song.changingB = false;
    stage.graphics->Tick(false);
    stage.graphics->Tick(false);
    EXPECT_EQ(stage.song.nextL, 1);
    EXPECT_TRUE(stage.graphics->IsEndReported());
    static_cast<void>(stage.stream.Rewind());
    stage.song.clock.Seek(5);
    stage.graphics->Tick(false);
    EXPECT_FALSE(stage.graphics->IsEndReported());
    stage.song.atEndB = stage.song.quittingB = true;
    stage.graphics->Tick(false);
    EXPECT_EQ(stage.song.deferredL, 1);
}

TEST(CGraphics, LetsAMovieIdleUntilItEnds) {
    Stage stage(1);
    stage.song.videoB = true;
    stage.graphics->Tick(false);
    EXPECT_EQ(stage.song.movie.idlesL, 1);
    stage.song.movie.endedB = true;
    stage.graphics->Tick(false);
    EXPECT_EQ(stage.song.nextL, 1);
}

TEST(CGraphics, StopsTheSongWhenItsStreamFails) {
    Stage stage(1);
    BrokenStream broken;
    stage.song.streamP = &broken;
    stage.song.pausedB = true;
    stage.song.clock.AddPending(4);
    stage.graphics->Tick(false);
    EXPECT_EQ(stage.song.stopped, noErr);   // a paused song reads nothing
    stage.song.pausedB = false;
    stage.graphics->Tick(false);
    EXPECT_EQ(stage.song.stopped, ioErr);
}

TEST(PlayNext, ChoosesTheCommand) {
    const struct {
        PlayNextState state;
        PlayNextCommand command;
    } cases[] = {
        {{}, PlayNextCommand::kNext},
        {{.songSaysEndB = true, .stopBetweenTracksB = true}, PlayNextCommand::kSongEndCheck},
        {{.stopBetweenTracksB = true}, PlayNextCommand::kStop},
        {{.hasPlaylistB = false}, PlayNextCommand::kStop},
        {{.playlistRefusesB = true}, PlayNextCommand::kStop},
        {{.stopAtPlaylistEndB = true}, PlayNextCommand::kNext},
        {{.stopAtPlaylistEndB = true, .lastOfSelectionB = true}, PlayNextCommand::kStop},
        {{.lastOfSelectionB = true}, PlayNextCommand::kNext},
    };
    for (const auto& c : cases) EXPECT_EQ(ChoosePlayNext(c.state), c.command);
}
}   // namespace
