#pragma once
#include <memory>
#include <QTimer>
#include <QWidget>

#include "Graphics/CGraphicsPort.h"
#include "Graphics/CPortView.h"
#include "Graphics/CPortWindow.h"
#include "Shell/CPortContext_Qt.h"

class CGraphicsPorts;

/** A window the room looks at: its port, all over it. A double click or F changes to full screen and back, Escape
   leaves it. Threads  main. */
class XVideoWindow final : public QWidget, public CPortView, public CPortWindow {
    Q_OBJECT
public:
    /** Screen 0 or 9; its port is among `ports` for as long as the window lives. */
    XVideoWindow(int screen, CGraphicsPorts& ports);
    ~XVideoWindow() override;

    [[nodiscard]] CGraphicsPort& Port() { return i_port; }

    Rect Bounds() const override;
    void Invalidate(const Rect& rect) override;
    void PaintNow() override;
    CPortContext* Context() override { return i_context.get(); }

    bool IsFullScreen() const override { return isFullScreen(); }
    bool IsVisible() const override { return isVisible(); }
    void SetFullScreen(bool onB) override;
    void SetAlwaysOnTop(bool onB) override;
    void ShowAndSelect() override;
    void Hide() override;
    OSErr SetOpacity(float opacity) override;
    OSErr SetTransparent(bool transparentB) override;

signals:
    void CloseAsked();
    /** The user began, and ended, to move or resize the window. */
    void Resizing(bool resizingB);

protected:
    void paintEvent(QPaintEvent* eventP) override;
    void closeEvent(QCloseEvent* eventP) override;
    void keyPressEvent(QKeyEvent* eventP) override;
    void mouseDoubleClickEvent(QMouseEvent* eventP) override;
    void resizeEvent(QResizeEvent* eventP) override;

private:
    QTimer i_resizeEnd;   // runs while the size keeps changing
    CGraphicsPorts& i_ports;
    CGraphicsPort i_port;
    std::unique_ptr<CPortContext_Qt> i_context;   // only while the window is painted
};
