#pragma once
#include <QImage>
#include <QTimer>
#include <QWidget>

class CPixels;

/** The window the room looks at: one picture, as large as the window allows, in its own proportions, the rest in the
    colour of the picture's border. A double click or F11 changes to full screen and back; Escape leaves it.
    Threads  main. The pixels are not copied: they must stay alive and unchanged until the next Show or Clear, or until
             the window is painted within the same message. */
class XVideoWindow final : public QWidget {
    Q_OBJECT
public:
    XVideoWindow();

    /** Shows `picture` (depth 32) from now on; what changed since the last call is drawn. */
    void Show(const CPixels& picture);
    /** Forgets the picture: its pixels may go. The window turns black. */
    void Clear();

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
    void ToggleFullScreen();
    [[nodiscard]] QRect Fitted() const;

    QTimer i_resizeEnd;   // runs while the size keeps changing
    QImage i_picture;   // a view of the picture's memory
};
