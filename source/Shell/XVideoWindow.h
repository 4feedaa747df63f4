#pragma once
#include <memory>
#include <QTimer>
#include <QWidget>

#include "Graphics/CGraphicsPort.h"
#include "Graphics/CPortView.h"
#include "Graphics/CPortWindow.h"
#include "Shell/CPortContext_Qt.h"
#include "Widgets/CWindowPlace.h"

class CGraphicsPorts;
class XCardSurface;

/** A window the room looks at: its port, all over it. A double click changes to full screen and back, and so do the
    keys of the commands that were attached to it. In full screen the pointer hides when it rests. With a graphics card
    its port is drawn on a surface that lies over it; a window that is seen through paints by itself.
    Threads  main. */
class XVideoWindow final : public QWidget, public CPortView, public CPortWindow {
    Q_OBJECT
public:
    /** Screen 0 or 9; `ports` outlives the window. `cardB`: drawn by OpenGL. */
    XVideoWindow(int screen, CGraphicsPorts& ports, bool cardB = false);
    ~XVideoWindow() override;

    /** In use: its port is among the ports, and playing shows and hides it. Closed at first. */
    void SetOpen(bool openB);
    [[nodiscard]] bool IsOpen() const { return i_openB; }

    [[nodiscard]] CGraphicsPort& Port() { return i_port; }
    [[nodiscard]] CWindowPlace& Place() { return i_place; }
    [[nodiscard]] const CWindowPlace& Place() const { return i_place; }

    Rect Bounds() const override;
    void Invalidate(const Rect& rect) override;
    void PaintNow() override;
    CPortContext* Context() override { return i_context.get(); }

    bool IsFullScreen() const override { return i_place.IsFullScreen(); }
    bool IsVisible() const override { return isVisible(); }
    void SetFullScreen(bool onB) override { i_place.SetFullScreen(onB); }
    void SetAlwaysOnTop(bool onB) override;
    void ShowAndSelect() override;
    void Hide() override { hide(); }
    OSErr SetOpacity(float opacity) override;
    OSErr SetTransparent(bool transparentB) override;

signals:
    void CloseAsked();
    /** The user began, and ended, to move or resize the window. */
    void Resizing(bool resizingB);
    /** A menu is wanted, at that place of the display. */
    void MenuAsked(const QPoint& global);

protected:
    void paintEvent(QPaintEvent* eventP) override;
    void closeEvent(QCloseEvent* eventP) override;
    void contextMenuEvent(QContextMenuEvent* eventP) override;
    void mouseDoubleClickEvent(QMouseEvent* eventP) override;
    void mouseMoveEvent(QMouseEvent* eventP) override;
    void resizeEvent(QResizeEvent* eventP) override;

private:
    void DrawPort(QPainter& painter);
    void ShowPointer();

    QTimer i_resizeEnd;     // runs while the size keeps changing
    QTimer i_pointerRest;   // runs while the pointer moves in full screen
    CWindowPlace i_place;
    CGraphicsPorts& i_ports;
    CGraphicsPort i_port;
    std::unique_ptr<CPortContext_Qt> i_context;   // only while the window is painted
    XCardSurface* i_cardP = nullptr;              // a child; null when the window paints by itself
    bool i_openB = false;
    bool i_refusalToldB = false;   // the log knows what the display system cannot do
};
