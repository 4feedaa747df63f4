#pragma once
#include <deque>
#include <functional>

#include "Platform/CUserInterface.h"

/** For tests: answers are laid out beforehand, what was shown can be read afterwards.
    Threads  main. */
class CUserInterface_Scripted final : public CUserInterface {
public:
    /** The next questions take these answers; with none left a question takes its safe one. */
    std::deque<Answer> answers;
    std::deque<std::optional<std::filesystem::path>> folders;
    std::deque<std::optional<std::size_t>> picks;
    /** "message: detail" of each alert; the questions; the texts and titles of progress, in order. */
    std::vector<std::string> alerts;
    std::vector<Question> questions;
    std::vector<std::string> progress;
    std::vector<std::string> pages;
    /** Called with each text of progress; what it throws, the interface throws. */
    std::function<void(std::string_view text)> atProgress;

    void Alert(std::string_view message, std::string_view detail) override;
    Answer Ask(const Question& question) override;
    std::unique_ptr<CProgressView> OpenProgress(std::string_view title) override;
    std::optional<std::filesystem::path> ChooseFolder(std::string_view prompt) override;
    std::optional<std::size_t> PickFromList(std::string_view prompt, std::span<const std::string> rows) override;
    bool OpenPage(std::string_view url) override;
    void Beep() override { ++beepsL; }
    bool AlertsMuted() const override { return mutedB; }
    bool IsShiftHeld() const override { return shiftB; }
    bool mutedB = false, shiftB = false;
    int beepsL = 0;
};
