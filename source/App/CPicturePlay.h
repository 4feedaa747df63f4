#pragma once
#include <filesystem>
#include <memory>

#include "App/CPlayingSong.h"

class CApp;

/** One CD+G file, shown without sound: its stream, its decoder, and the drift-free clock that paces them.
    Owner    TVoplaApp. Threads  main; the clock thread it owns adds to the pending time alone. */
class CPicturePlay final : public CPlayingSong {
public:
    explicit CPicturePlay(CApp& app);
    ~CPicturePlay() override;

    /** Reads `file` and starts. fnfErr, eofErr when there is not one packet in it; the application is as before then. */
    OSErr Start(const std::filesystem::path& file);

    bool IsPlaying() const override;
    void VideoIdle(bool forcedB) override;
    void Stop() override;

private:
    struct Parts;
    CApp& i_app;
    std::unique_ptr<Parts> i_parts;
};
