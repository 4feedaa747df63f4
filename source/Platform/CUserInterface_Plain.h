#pragma once
#include <functional>

#include "Platform/CUserInterface.h"

/** Nobody sits in front: what would be shown is written as lines, a question takes its safe answer.
    Threads  main. */
class CUserInterface_Plain final : public CUserInterface {
public:
    using Writer = std::function<void(std::string_view line)>;
    explicit CUserInterface_Plain(Writer writer) : i_write(std::move(writer)) {}

    void Alert(std::string_view message, std::string_view detail) override;
    Answer Ask(const Question& question) override;
    std::unique_ptr<CProgressView> OpenProgress(std::string_view title) override;
    std::optional<std::filesystem::path> ChooseFolder(std::string_view prompt) override;
    std::optional<std::size_t> PickFromList(std::string_view prompt, std::span<const std::string> rows) override;
    bool OpenPage(std::string_view url) override;
    void Beep() override {}

private:
    Writer i_write;
};
