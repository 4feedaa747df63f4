#pragma once
#include <memory>
#include <QProcess>
#include <QString>
#include <QStringList>

/** Whether the machine's graphics card draws the video windows, by OpenGL. It scales pictures for nothing, but a driver
    may crash, hang or be a program that draws with the processor, far slower than the toolkit does: this program is run
    once more, in a process of its own, to ask the driver before any window uses it.
    Threads  main, with a QCoreApplication.
    Errors   none: who cannot draw by OpenGL draws without it, and the log says why. */
class CGraphicsCard {
public:
    enum Choice : int { kChoice_AUTOMATIC, kChoice_PROCESSOR, kChoice_OPENGL };
    /** The word of the command line that asks. */
    static constexpr const char* kOptionZ = "--ask-graphics-card";

    /** Who is asked, and how long an answer is waited for, in milliseconds. */
    struct Witness {
        QString program;   // empty: this one
        QStringList words{kOptionZ};
        int mostL = 3000;
    };
    CGraphicsCard();
    explicit CGraphicsCard(Witness witness);
    /** A witness that still hangs is left to itself. */
    ~CGraphicsCard();

    /** Begins to ask, unless `choice` leaves nothing to ask or it was asked before. Does not wait. */
    void Ask(Choice choice);
    /** The answer; false without Ask. The first time it may wait: the event loop runs meanwhile, without the user's
        events. */
    [[nodiscard]] bool Draws();

    /** What the asking process does: prints the renderer's name. Its exit status; 1 where windows have no OpenGL. */
    static int Tell(int& countL, char** wordsZ);
    /** The renderer is no card: it draws with the processor. */
    [[nodiscard]] static bool IsSoftware(const QString& renderer);

private:
    void Wait();
    void Settle(bool drawsB, const QString& why);

    const Witness i_witness;
    Choice i_choice = kChoice_AUTOMATIC;
    std::unique_ptr<QProcess> i_questionP;   // null when there is none
    bool i_settledB = false, i_drawsB = false;
};
