#pragma once
#include <memory>
#include <QWidget>

#include "Graphics/CArtworkPort.h"
#include "Graphics/CPortView.h"
#include "Shell/CPortContext_Qt.h"

class CGraphicsPorts;

/** What the room sees, small, in the main window; without a song the cover that its port was given.
    Threads  main. */
class XPreviewPane final : public QWidget, public CPortView {
    Q_OBJECT
public:
    /** Its port is screen 1 of `ports` for as long as the pane lives. */
    explicit XPreviewPane(CGraphicsPorts& ports, QWidget* parentP = nullptr);
    ~XPreviewPane() override;

    [[nodiscard]] CArtworkPort& Port() { return i_port; }

    Rect Bounds() const override;
    void Invalidate(const Rect& rect) override;
    void PaintNow() override;
    CPortContext* Context() override { return i_context.get(); }

    QSize sizeHint() const override { return {300, 216}; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return width * 216 / 300; }

protected:
    void paintEvent(QPaintEvent* eventP) override;

private:
    CGraphicsPorts& i_ports;
    CArtworkPort i_port;
    std::unique_ptr<CPortContext_Qt> i_context;   // only while the pane is painted
};
