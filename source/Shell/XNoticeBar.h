#pragma once
#include <QFrame>
#include <QTimer>

#include "App/CNotices.h"

class QToolButton;
class XActions;
class XElidedLabel;

/** The latest notice that was not read, with the number of the others, beneath what the user works with: no row moves
    when it comes, and it takes neither the focus nor the keys. Hidden while all is read.
    Threads  main. */
class XNoticeBar final : public QFrame {
    Q_OBJECT
public:
    /** `notices` outlives it. */
    XNoticeBar(CNotices& notices, XActions& actions);

    /** The notices have changed. */
    void Follow();

private:
    CNotices& i_notices;
    NoticeID i_shown{0};
    QTimer i_offerEnds;
    // Children.
    XElidedLabel* i_wordsP;
    QToolButton* i_actP;
    QToolButton* i_allP;
    QToolButton* i_readP;
};

/** A notice in one line: what was told, and how often. */
[[nodiscard]] QString NoticeText(const Notice& notice);
