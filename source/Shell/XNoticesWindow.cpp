#include "Shell/XNoticesWindow.h"

#include <algorithm>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "Platform/CClock.h"
#include "Shell/XNoticeBar.h"
#include "Widgets/CWindowPlace.h"
#include "Widgets/QtText.h"

namespace {
constexpr int kNotice_Role = Qt::UserRole;
}

XNoticesWindow::XNoticesWindow(CNotices& notices, QWidget* parentP)
    : QDialog(parentP), i_notices(notices), i_listP(new QListWidget), i_actP(new QPushButton) {
    setWindowTitle(tr("Notices"));
    setAccessibleName(windowTitle());
    setAccessibleDescription(tr("All that was told since the start, the latest first"));
    resize(640, 360);
    (void)CWindowPlace::Of(*this);
    i_listP->setWordWrap(true);
    i_listP->setResizeMode(QListView::Adjust);
    i_listP->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    i_listP->setTextElideMode(Qt::ElideNone);
    i_listP->setAccessibleName(windowTitle());
    i_listP->setAccessibleDescription(accessibleDescription());
    auto* const buttonsP = new QDialogButtonBox(QDialogButtonBox::Close);
    i_actP->setAutoDefault(false);
    i_actP->setAccessibleDescription(tr("Does what the notice offers"));
    buttonsP->addButton(i_actP, QDialogButtonBox::ActionRole);
    auto* const columnP = new QVBoxLayout(this);
    columnP->addWidget(i_listP, 1);
    columnP->addWidget(buttonsP);
    connect(buttonsP, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(i_actP, &QPushButton::clicked, this, [this] { i_notices.Act(Selected()); });
    connect(i_listP, &QListWidget::currentItemChanged, this, &XNoticesWindow::ShowOffer);
    Follow();
    i_notices.SetAllRead();
}

NoticeID XNoticesWindow::Selected() const {
    const QListWidgetItem* const itemP = i_listP->currentItem();
    return itemP == nullptr ? NoticeID{0} : NoticeID{itemP->data(kNotice_Role).toULongLong()};
}

void XNoticesWindow::Follow() {
    const std::deque<Notice>& all = i_notices.All();
    const NoticeID selected = Selected();
    {
        const QSignalBlocker quiet(i_listP);
        i_listP->clear();
        for (auto it = all.rbegin(); it != all.rend(); ++it) {
            const QDateTime toldT =
                QDateTime::fromMSecsSinceEpoch(static_cast<qint64>((it->toldT + kEpoch2001T) * 1000.0));
            auto* const itemP = new QListWidgetItem(
                QLocale().toString(toldT.time(), QLocale::ShortFormat) + "   " + NoticeText(*it), i_listP);
            itemP->setData(kNotice_Role, static_cast<qulonglong>(it->id));
            if (it->id == selected || it == all.rbegin()) i_listP->setCurrentItem(itemP);
        }
        if (all.empty()) new QListWidgetItem(tr("Nothing was told yet."), i_listP);
    }
    ShowOffer();
}

void XNoticesWindow::ShowOffer() {
    const std::deque<Notice>& all = i_notices.All();
    const auto found = std::ranges::find(all, Selected(), &Notice::id);
    const bool offerB = found != all.end() && found->action.act;
    i_actP->setVisible(offerB);
    if (!offerB) return;
    i_actP->setText(QtText(found->action.label).replace('&', "&&"));
    i_actP->setAccessibleName(QtText(found->action.label));
}
