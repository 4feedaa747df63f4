#include "Platform/CUserInterface_Scripted.h"

namespace {

class CProgressView_Scripted final : public CProgressView {
public:
    explicit CProgressView_Scripted(CUserInterface_Scripted& user) : i_user(user) {}
    void SetText(std::string_view text) override {
        i_user.progress.emplace_back(text);
        if (i_user.atProgress) i_user.atProgress(text);
    }
    void SetSteps(std::size_t, std::size_t) override {}
    void Redraw() override {}

private:
    CUserInterface_Scripted& i_user;
};

template <class T>
T TakeOr(std::deque<T>& laidOut, T otherwise) {
    if (laidOut.empty()) return otherwise;
    T taken = std::move(laidOut.front());
    laidOut.pop_front();
    return taken;
}

}   // namespace

void CUserInterface_Scripted::Alert(std::string_view message, std::string_view detail) {
    alerts.push_back(std::string(message) + ": " + std::string(detail));
}

Answer CUserInterface_Scripted::Ask(const Question& question) {
    questions.push_back(question);
    return TakeOr(answers, Answer{question.safeIndex, question.checkedB});
}

std::unique_ptr<CProgressView> CUserInterface_Scripted::OpenProgress(std::string_view title) {
    progress.emplace_back(title);
    return std::make_unique<CProgressView_Scripted>(*this);
}

std::optional<std::filesystem::path> CUserInterface_Scripted::ChooseFolder(std::string_view) {
    return TakeOr<std::optional<std::filesystem::path>>(folders, std::nullopt);
}

std::optional<std::size_t> CUserInterface_Scripted::PickFromList(std::string_view, std::span<const std::string>) {
    return TakeOr<std::optional<std::size_t>>(picks, std::nullopt);
}

bool CUserInterface_Scripted::OpenPage(std::string_view url) {
    pages.emplace_back(url);
    return true;
}
