#pragma once
#include <QProcess>
#include <QString>

/** Whether the machine's graphics card draws the video windows, by OpenGL. It scales pictures for nothing, but a driver
    may crash, hang or be a program that draws with the processor, far slower than the toolkit does: this program is run
    once more, in a process of its own, to ask the driver before any window uses it.
    Threads  main, with a QGuiApplication.
    Errors   none: who cannot draw by OpenGL draws without it, and the log says why. */
class CGraphicsCard {
public:
    enum Choice : int { kChoice_AUTOMATIC, kChoice_PROCESSOR, kChoice_OPENGL };
    static constexpr const char* kPreferenceZ = "Video Drawing (0=automatic, 1=processor, 2=OpenGL)";
    /** The word of the command line that asks. */
    static constexpr const char* kOptionZ = "--ask-graphics-card";

    /** Begins to ask, unless `choice` leaves nothing to ask or it was asked before. Does not wait. */
    void Ask(Choice choice);
    /** The answer; waits for it, at most kAnswer_Milliseconds in all. False without Ask. */
    [[nodiscard]] bool Draws();

    /** What the asking process does: prints the renderer's name. Its exit status. */
    static int Tell(int& countL, char** wordsZ);
    /** The renderer is no card: it draws with the processor. */
    [[nodiscard]] static bool IsSoftware(const QString& renderer);

private:
    static constexpr int kAnswer_Milliseconds = 3000;
    void Settle(bool drawsB, const QString& why);

    Choice i_choice = kChoice_AUTOMATIC;
    QProcess i_question;
    bool i_askedB = false, i_settledB = false, i_drawsB = false;
};
