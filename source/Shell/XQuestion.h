#pragma once
#include <QMessageBox>
#include <vector>

#include "Platform/BesideShow.h"

/** A question on the screen. It stands beside the show: no other window waits for it.
    Threads  main. */
class XQuestion final : public QMessageBox {
    Q_OBJECT
public:
    XQuestion(const ::Question& question, AskedFor who, QWidget* parentP);

    /** Once it is closed; the safe one when no button was pressed. */
    [[nodiscard]] Answer Answered() const;
    /** It asks the same. */
    [[nodiscard]] bool Asks(const ::Question& question) const;

private:
    const ::Question i_question;           // the box has a name "Question" of its own
    std::vector<QPushButton*> i_buttons;   // children
    QCheckBox* i_checkP = nullptr;
};
