#pragma once
#include <filesystem>
#include <memory>

#include "Play/CPlayWatcher.h"
#include "Threads/CHandle.h"

class CGraphicsPorts;
class COffscreen;
class CPlayControl;

/** The cover in the preview while a song plays that has no picture: the one inside its file, read on a worker.
    Threads  main.
    Owner    CApp; control and ports outlive it.
    Errors   a cover that cannot be read is none; the log is told. */
class CCoverArt final : private CPlayWatcher {
public:
    CCoverArt(CPlayControl& play, CGraphicsPorts& ports);
    ~CCoverArt() override;
    CCoverArt(const CCoverArt&) = delete;
    CCoverArt& operator=(const CCoverArt&) = delete;

private:
    friend class CT_ReadCover;
    void PlayChanged() override;
    /** What became of reading `file`. */
    void Take(const std::filesystem::path& file, std::shared_ptr<const COffscreen> cover);
    [[nodiscard]] std::filesystem::path Wanted() const;

    CPlayControl& i_play;
    CGraphicsPorts& i_ports;
    std::filesystem::path i_file;       // whose cover is shown, or is being read; empty for none
    CHandled<CCoverArt> i_self{this};   // what a worker comes back by
};
