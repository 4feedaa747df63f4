#pragma once
#include <QSlider>

/** The way through a song: a press jumps to the place, a drag seeks where it ends. While it is dragged the song's own
    progress does not move it.
    Units    300ths of the song.
    Threads  main. */
class XSeekBar final : public QSlider {
    Q_OBJECT
public:
    XSeekBar();

    /** The song stands at `time300` of `end300`; 0 for no song. */
    void SetTime300(long time300, long end300);
    /** The time at `x` of a groove of `width` pixels whose ends are half a handle wide, within 0 to `end300`. */
    [[nodiscard]] static long TimeAt(int x, int width, long end300);
    /** The middle of the handle. */
    [[nodiscard]] static int XOf(long time300, int width, long end300);

    [[nodiscard]] bool IsDragging() const { return i_draggingB; }
    /** Another song plays: a drag that was meant for the one before seeks nothing. */
    void ForgetDrag() { i_draggingB = false; }

    QSize sizeHint() const override { return {400, 28}; }

signals:
    /** The user asks for this place. */
    void SeekAsked(long time300);
    /** He is on his way: what the digits should show. */
    void Dragged(long time300);

protected:
    void paintEvent(QPaintEvent* eventP) override;
    void mousePressEvent(QMouseEvent* eventP) override;
    void mouseMoveEvent(QMouseEvent* eventP) override;
    void mouseReleaseEvent(QMouseEvent* eventP) override;
    void wheelEvent(QWheelEvent* eventP) override;

private:
    void DragTo(int x);

    bool i_draggingB = false;
};
