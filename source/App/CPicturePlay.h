#pragma once
#include <filesystem>
#include <memory>

#include "App/CPlayingSong.h"
#include "Core/CMainThreadProc.h"
#include "Graphics/CGraphicsClock.h"
#include "Graphics/CGraphicsSong.h"
#include "Graphics/CSubCodeStream_Memory.h"

class CApp;
class CGraphics;
class CT_DriftFree_Graphics;
struct GraphicsPace;

/** One CD+G file, shown without sound: its stream, its decoder, and the drift-free thread that paces them.
    Owner    TVoplaApp. Threads  main. */
class CPicturePlay final : public CPlayingSong, private CGraphicsSong {
public:
    explicit CPicturePlay(CApp& app);
    ~CPicturePlay() override;

    /** Reads `file`; nothing is shown yet, and what plays goes on. fnfErr, eofErr when there is not one packet in it.
     */
    OSErr Load(const std::filesystem::path& file);
    /** After Load: becomes the current song and starts its clock. */
    OSErr Begin();
    /** The picture of `time300`; forward executes what lies between, backwards replays from the start. */
    OSErr Seek(long time300);
    [[nodiscard]] long Time300() const { return i_clock.Now(); }
    [[nodiscard]] const CGraphics& Graphics() const { return *i_graphics; }

    bool IsPlaying() const override { return i_playingB; }
    void VideoIdle(bool forcedB) override;
    void Stop() override;

private:
    // What the picture asks of its song.
    std::string Name() const override { return i_file.stem().string(); }
    CGraphicsClock& Clock() override { return i_clock; }
    CSubCodeStream* Stream() override { return &i_stream; }
    bool IsPaused() const override { return !i_playingB; }
    bool IsAtEnd() const override { return false; }   // the stream's end is the song's
    bool IsAudioFinished() const override { return true; }
    bool IsVideoSong() const override { return false; }
    CGraphicsMovie* Movie() override { return nullptr; }
    std::uint16_t ChannelMask() const override { return 0xFFFF; }
    long SyncSlip300() const override;
    bool IsChangingSong() const override { return false; }
    bool IsQuitting() const override;
    void PostPlayNext() override;
    void DeferPlayNext() override {}   // there is no next song
    void StopAfter(OSErr err) override;
    void NoteDrawn(double absoluteT) override;

    CApp& i_app;
    CGraphicsClock i_clock;
    std::filesystem::path i_file;
    CSubCodeStream_Memory i_stream;
    std::unique_ptr<CGraphics> i_graphics;
    std::shared_ptr<GraphicsPace> i_pace;
    CT_DriftFree_Graphics* i_threadP = nullptr;   // the fork's; lives until it was told to stop
    bool i_playingB = false;
};
