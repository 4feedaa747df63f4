#include "App/CNotices.h"

#include <algorithm>
#include <utility>

#include "Platform/CClock.h"

NoticeID CNotices::Enter(Notice notice) {
    notice.id = NoticeID{++i_lastL};
    notice.toldT = CClock::Get().AbsoluteT();
    i_notices.push_back(std::move(notice));
    if (i_notices.size() > kMost) {   // the eldest goes, of those that were read if there is one
        const auto read = std::ranges::find(i_notices, true, &Notice::readB);
        i_notices.erase(read == i_notices.end() ? i_notices.begin() : read);
    }
    i_changed();
    return NoticeID{i_lastL};
}

NoticeID CNotices::Add(std::string_view words, std::string_view detail, NoticeAction action) {
    Notice notice{.words = std::string(words), .detail = std::string(detail), .action = std::move(action)};
    const auto same = std::ranges::find_if(i_notices, [&](const Notice& n) {
        return !n.IsOffer() && n.words == notice.words && n.detail == notice.detail;
    });
    if (same != i_notices.end()) {
        notice.countL = same->countL + 1;
        i_notices.erase(same);
    }
    return Enter(std::move(notice));
}

NoticeID CNotices::Offer(NoticeAction action, double untilT) {
    std::string words = action.label;
    return Enter({.words = std::move(words), .detail = {}, .action = std::move(action), .untilT = untilT});
}

void CNotices::Withdraw(NoticeID id) {
    const Notice* const noticeP = Find(id);
    if (noticeP == nullptr || !noticeP->IsOffer()) return;
    Erase(id);
    i_changed();
}

void CNotices::Act(NoticeID id) {
    EndOffers();
    Notice* const noticeP = Find(id);
    if (noticeP == nullptr || !noticeP->action.act) return;
    const std::function<void()> act = noticeP->action.act;
    if (noticeP->IsOffer())
        Erase(id);
    else
        noticeP->readB = true;
    i_changed();
    act();   // last: it may tell something itself
}

void CNotices::SetRead(NoticeID id) {
    Notice* const noticeP = Find(id);
    if (noticeP == nullptr || std::exchange(noticeP->readB, true)) return;
    i_changed();
}

void CNotices::SetAllRead() {
    bool anyB = false;
    for (Notice& notice : i_notices)
        if (!notice.IsOffer()) anyB |= !std::exchange(notice.readB, true);
    if (anyB) i_changed();
}

const std::deque<Notice>& CNotices::All() {
    EndOffers();
    return i_notices;
}

Notice* CNotices::Find(NoticeID id) {
    const auto found = std::ranges::find(i_notices, id, &Notice::id);
    return found == i_notices.end() ? nullptr : &*found;
}

void CNotices::Erase(NoticeID id) {
    std::erase_if(i_notices, [id](const Notice& notice) { return notice.id == id; });
}

void CNotices::EndOffers() {
    const double nowT = CClock::Get().SteadyT();
    std::erase_if(i_notices, [nowT](const Notice& notice) { return notice.IsOffer() && *notice.untilT <= nowT; });
}
