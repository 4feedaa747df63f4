#include "App/CCoverArt.h"

#include <utility>

#include "App/CT_ReadCover.h"
#include "Graphics/CGraphicsPorts.h"
#include "Graphics/COffscreen.h"
#include "Play/CPlayControl.h"

CCoverArt::CCoverArt(CPlayControl& play, CGraphicsPorts& ports) : i_play(play), i_ports(ports) {
    i_play.AddWatcher(*this);
}

CCoverArt::~CCoverArt() {
    i_self.Empty();
    i_play.RemoveWatcher(*this);
    i_ports.SetCover(nullptr);
}

std::filesystem::path CCoverArt::Wanted() const {
    const CSongPlay* const playP = i_play.Current();
    if (playP == nullptr || i_play.State() != PlayState::kPlaying) return {};
    const CSongLoad& files = playP->Files();
    return files.Kind() == SongKind::kSound ? files.SoundFile().GetPath() : std::filesystem::path();
}

void CCoverArt::PlayChanged() {
    std::filesystem::path file = Wanted();
    if (file == i_file) return;
    i_file = std::move(file);
    i_ports.SetCover(nullptr);
    if (!i_file.empty())
        static_cast<void>(CT_Preemptive::Start(std::make_unique<CT_ReadCover>(i_file, i_self.Handle())));
}

void CCoverArt::Take(const std::filesystem::path& file, std::shared_ptr<const COffscreen> cover) {
    if (file == i_file) i_ports.SetCover(std::move(cover));   // else another song plays by now
}
