#pragma once
#include "Graphics/CGraphicsPort.h"

/** The port of the preview pane in the browser window: the song's picture, small; without a song its cover.
    Owner    the pane. */
class CArtworkPort final : public CGraphicsPort {
public:
    /** Holds back what the port would have painted meanwhile; one paint follows when the last of them goes. */
    class ScSkipForecedUpdate {
    public:
        explicit ScSkipForecedUpdate(CArtworkPort& port);
        ~ScSkipForecedUpdate();
        ScSkipForecedUpdate(const ScSkipForecedUpdate&) = delete;
        ScSkipForecedUpdate& operator=(const ScSkipForecedUpdate&) = delete;

    private:
        CArtworkPort& i_port;
    };

    explicit CArtworkPort(CPortView& view);

    /** Off while the pane is closed: nothing is painted. */
    void SetEnabled(bool enabledB);
    [[nodiscard]] bool IsEnabled() const noexcept { return i_enabledB; }
    void SetCover(std::shared_ptr<const CPixels> cover) override;

    /** Paints the pane at once, when it is on and nothing holds it back. */
    void Flush() override;
    void Refresh(const std::optional<PicturePart>& part = {}) override;

protected:
    void DrawEmpty() override;

private:
    bool i_enabledB = true;
    int i_skipsL = 0;          // ScSkipForecedUpdate that live
    bool i_skippedB = false;   // a refresh came meanwhile
    std::shared_ptr<const CPixels> i_cover;
};
