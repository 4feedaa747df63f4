#pragma once
#include <QDialog>

#include "App/CNotices.h"

class QListWidget;
class QPushButton;

/** All that was told in this run, the latest first; what is seen here counts as read. It stands beside the show.
    Threads  main. `notices` outlives it. */
class XNoticesWindow final : public QDialog {
    Q_OBJECT
public:
    XNoticesWindow(CNotices& notices, QWidget* parentP);

    /** The notices have changed. */
    void Follow();

private:
    [[nodiscard]] NoticeID Selected() const;
    void ShowOffer();

    CNotices& i_notices;
    QListWidget* i_listP;   // children
    QPushButton* i_actP;
};
