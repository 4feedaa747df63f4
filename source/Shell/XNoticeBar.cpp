#include "Shell/XNoticeBar.h"

#include <algorithm>
#include <cmath>
#include <QAccessible>
#include <QHBoxLayout>
#include <QToolButton>
#include <utility>

#include "Platform/CClock.h"
#include "Shell/XActions.h"
#include "Widgets/ActionButton.h"
#include "Widgets/QtText.h"
#include "Widgets/XElidedLabel.h"

namespace {

constexpr double kLook_MostT = 3600;

/** A label of the engine's: "&" is a letter there. */
QString ButtonText(const std::string& label) { return QtText(label).replace('&', "&&"); }

}   // namespace

QString NoticeText(const Notice& notice) {
    QString text = QtText(notice.words);
    if (!notice.detail.empty()) text += ": " + QtText(notice.detail);
    if (notice.countL > 1) text += XNoticeBar::tr(" (%1 times)").arg(notice.countL);
    return text.simplified();
}

XNoticeBar::XNoticeBar(CNotices& notices, XActions& actions)
    : i_notices(notices),
      i_wordsP(new XElidedLabel(tr("Notice"))),
      i_actP(new QToolButton),
      i_allP(new QToolButton),
      i_readP(new QToolButton) {
    setObjectName("notice");
    setAccessibleName(tr("Notice"));
    i_actP->setObjectName("offer");
    i_actP->setAccessibleName(tr("Offer"));
    i_actP->setAccessibleDescription(tr("Does what the notice offers"));
    BindButton(*i_allP, actions.Get(Command::kShowNotices));
    i_readP->setObjectName("read");
    i_readP->setText(tr("Dismiss"));
    i_readP->setToolTip(tr("The notice was read; it stays in the list"));
    i_readP->setAccessibleName(tr("Dismiss the notice"));
    i_readP->setAccessibleDescription(i_readP->toolTip());
    for (QToolButton* const buttonP : {i_actP, i_allP, i_readP}) buttonP->setFocusPolicy(Qt::TabFocus);
    auto* const rowP = new QHBoxLayout(this);
    rowP->setContentsMargins(14, 4, 10, 4);
    rowP->addWidget(i_wordsP, 1);
    for (QToolButton* const buttonP : {i_actP, i_allP, i_readP}) rowP->addWidget(buttonP);
    connect(i_actP, &QToolButton::clicked, this, [this] { i_notices.Act(i_shown); });
    connect(i_readP, &QToolButton::clicked, this, [this] {
        const NoticeID read = i_shown;   // the first call shows the next one
        i_notices.Withdraw(read);
        i_notices.SetRead(read);
    });
    i_offerEnds.setSingleShot(true);
    connect(&i_offerEnds, &QTimer::timeout, this, &XNoticeBar::Follow);
    Follow();
}

void XNoticeBar::Follow() {
    i_offerEnds.stop();
    const std::deque<Notice>& all = i_notices.All();
    const auto unreadL = std::ranges::count(all, false, &Notice::readB);
    // What is offered ends soon, and goes before what can be read at any time.
    const auto offered = std::find_if(all.rbegin(), all.rend(), [](const Notice& notice) { return notice.IsOffer(); });
    const auto latest =
        offered != all.rend() ? offered : std::ranges::find(all.rbegin(), all.rend(), false, &Notice::readB);
    if (latest == all.rend()) return hide();
    const Notice& notice = *latest;
    i_wordsP->SetText(notice.IsOffer() ? QString() : NoticeText(notice));   // an offer is a button that says all
    i_actP->setVisible(static_cast<bool>(notice.action.act));
    i_actP->setText(ButtonText(notice.action.label));
    i_actP->setAccessibleName(QtText(notice.action.label));
    i_allP->setText(unreadL > 1 ? tr("%1 more…").arg(unreadL - 1) : tr("All…"));
    if (notice.IsOffer()) {
        const double leftT = std::clamp(*notice.untilT - CClock::Get().SteadyT(), 0.0, kLook_MostT);
        i_offerEnds.start(static_cast<int>(std::ceil(leftT * 1000)));
    }
    show();
    if (std::exchange(i_shown, notice.id) == notice.id) return;
    QWidget* const newsP = notice.IsOffer() ? static_cast<QWidget*>(i_actP) : i_wordsP;
    QAccessibleEvent event(newsP, QAccessible::Alert);   // read out where somebody listens
    QAccessible::updateAccessibility(&event);
}
