#include "Platform/BesideShow.h"

void AskThen(CUserInterface& ui, const Question& question, CBesideShow::Answered answered, AskedFor who) {
    if (auto* const besideP = dynamic_cast<CBesideShow*>(&ui); besideP != nullptr)
        besideP->AskThen(question, std::move(answered), who);
    else
        answered(ui.Ask(question));
}

void ChooseFolderThen(CUserInterface& ui, std::string_view prompt, CBesideShow::Chosen chosen) {
    if (auto* const besideP = dynamic_cast<CBesideShow*>(&ui); besideP != nullptr)
        besideP->ChooseFolderThen(prompt, std::move(chosen));
    else
        chosen(ui.ChooseFolder(prompt));
}

void AlertAndWait(CUserInterface& ui, std::string_view message, std::string_view detail) {
    if (auto* const besideP = dynamic_cast<CBesideShow*>(&ui); besideP != nullptr)
        besideP->AlertAndWait(message, detail);
    else
        ui.Alert(message, detail);
}
