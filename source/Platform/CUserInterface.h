#pragma once
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/** One question with its buttons. */
struct Question {
    std::string title, text;
    std::vector<std::string> buttons;   // in their order; never empty
    std::size_t defaultIndex = 0;       // what Return takes
    std::size_t safeIndex = 0;          // what deletes and interrupts nothing; what Escape takes
    std::string checkBox;               // its label; empty for none
    bool checkedB = false;
};
struct Answer {
    std::size_t buttonIndex = 0;
    bool checkedB = false;
};

/** A window, or log lines, that shows how far a long task is. Lives as long as the object. */
class CProgressView {
public:
    virtual ~CProgressView() = default;
    virtual void SetText(std::string_view text) = 0;
    /** `done` of `total` steps; a total of 0 is "busy". */
    virtual void SetSteps(std::size_t done, std::size_t total) = 0;
    /** Draws what is pending; called while the main thread is busy. */
    virtual void Redraw() = 0;
};

/** What the engine asks of whoever sits in front of it. Forms: Qt (the desktop), plain (logs and takes the safe answer),
    scripted (tests).
    Threads  main thread only; CAlerts queues for the others. */
class CUserInterface {
public:
    virtual ~CUserInterface() = default;
    virtual void Alert(std::string_view message, std::string_view detail) = 0;
    virtual Answer Ask(const Question& question) = 0;
    [[nodiscard]] virtual std::unique_ptr<CProgressView> OpenProgress(std::string_view title) = 0;
    /** The folder chosen, nothing on cancel. */
    virtual std::optional<std::filesystem::path> ChooseFolder(std::string_view prompt) = 0;
    /** The index of the row picked, nothing on cancel. */
    virtual std::optional<std::size_t> PickFromList(std::string_view prompt, std::span<const std::string> rows) = 0;
    /** Opens a page in the browser of the user; false when there is none. */
    virtual bool OpenPage(std::string_view url) = 0;
    virtual void Beep() = 0;
    /** The user holds Control and Alt: alerts only beep. The way out of a dialog that keeps coming back in a show. */
    [[nodiscard]] virtual bool AlertsMuted() const { return false; }
    /** The user holds Shift: at the start it saves the whole library anew. */
    [[nodiscard]] virtual bool IsShiftHeld() const { return false; }
    /** Ends every dialog that is open, with its safe answer: the system wants the process to end. */
    virtual void DismissDialogs() {}
};
