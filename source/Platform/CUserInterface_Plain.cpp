#include "Platform/CUserInterface_Plain.h"

namespace {

/** The log lines of a long task come from the task itself; there is no window to keep. */
class CProgressView_None final : public CProgressView {
public:
    void SetText(std::string_view) override {}
    void SetSteps(std::size_t, std::size_t) override {}
    void Redraw() override {}
};

}   // namespace

void CUserInterface_Plain::Alert(std::string_view message, std::string_view detail) {
    i_write("alert: " + std::string(message) + (detail.empty() ? "" : ": " + std::string(detail)));
}

Answer CUserInterface_Plain::Ask(const Question& question) {
    const std::string button =
        question.safeIndex < question.buttons.size() ? question.buttons[question.safeIndex] : std::string();
    i_write("question: " + question.title + ": " + question.text + " (answered \"" + button + "\")");
    return {question.safeIndex, question.checkedB};
}

std::unique_ptr<CProgressView> CUserInterface_Plain::OpenProgress(std::string_view) {
    return std::make_unique<CProgressView_None>();
}

std::optional<std::filesystem::path> CUserInterface_Plain::ChooseFolder(std::string_view prompt) {
    i_write("folder wanted, nobody to choose: " + std::string(prompt));
    return std::nullopt;
}

std::optional<std::size_t> CUserInterface_Plain::PickFromList(std::string_view prompt, std::span<const std::string>) {
    i_write("choice wanted, nobody to choose: " + std::string(prompt));
    return std::nullopt;
}

bool CUserInterface_Plain::OpenPage(std::string_view url) {
    i_write("page: " + std::string(url));
    return false;
}
