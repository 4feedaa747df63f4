#pragma once
#include "Platform/BesideShow.h"

/** The dialogs of the desktop; none is modal. Once the main window stands, alerts are its notices. Texts are shown as plain text: a file's name is never read as markup.
    Threads  main. */
class CUserInterface_Qt final : public CUserInterface, public CBesideShow {
public:
    void Alert(std::string_view message, std::string_view detail) override;
    void AlertAndWait(std::string_view message, std::string_view detail) override;
    Answer Ask(const Question& question) override;
    void AskThen(const Question& question, Answered answered, AskedFor who) override;
    std::unique_ptr<CProgressView> OpenProgress(std::string_view title) override;
    std::optional<std::filesystem::path> ChooseFolder(std::string_view prompt) override;
    void ChooseFolderThen(std::string_view prompt, Chosen chosen) override;
    std::optional<std::size_t> PickFromList(std::string_view prompt, std::span<const std::string> rows) override;
    bool OpenPage(std::string_view url) override;
    void Beep() override;
    bool AlertsMuted() const override;
    bool IsShiftHeld() const override;
    void DismissDialogs() override;
};
