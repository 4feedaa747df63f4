#include "Shell/XQuestion.h"

#include <algorithm>
#include <QCheckBox>
#include <QPushButton>

#include "Widgets/QtText.h"

namespace {

/** A label of the engine's: "&" is a letter there. */
QString Label(std::string_view text) { return QtText(text).replace('&', "&&"); }

}   // namespace

XQuestion::XQuestion(const ::Question& question, AskedFor who, QWidget* parentP)
    : QMessageBox(QMessageBox::Question, QtText(question.title), QtText(question.text), QMessageBox::NoButton, parentP),
      i_question(question) {
    setModal(false);   // a message box is born modal
    setTextFormat(Qt::PlainText);
    setAttribute(Qt::WA_ShowWithoutActivating, who == AskedFor::kItself);
    for (const std::string& label : question.buttons)
        i_buttons.push_back(addButton(Label(label), QMessageBox::ActionRole));
    if (question.defaultIndex < i_buttons.size()) setDefaultButton(i_buttons[question.defaultIndex]);
    if (question.safeIndex < i_buttons.size()) setEscapeButton(i_buttons[question.safeIndex]);
    if (question.checkBox.empty()) return;
    i_checkP = new QCheckBox(Label(question.checkBox));
    i_checkP->setChecked(question.checkedB);
    setCheckBox(i_checkP);
}

Answer XQuestion::Answered() const {
    const auto clicked = std::ranges::find(i_buttons, clickedButton());
    const bool checkedB = i_checkP != nullptr ? i_checkP->isChecked() : i_question.checkedB;
    if (clicked == i_buttons.end()) return {i_question.safeIndex, checkedB};
    return {static_cast<std::size_t>(clicked - i_buttons.begin()), checkedB};
}

bool XQuestion::Asks(const ::Question& question) const {
    return i_question.title == question.title && i_question.text == question.text;
}
