#pragma once
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

enum class NoticeID : std::uint64_t {};

/** What the user can do about a notice. */
struct NoticeAction {
    std::string label;           // of its button
    std::function<void()> act;   // main thread; empty: there is nothing to do
};

/** Something that was told, as it stands now. */
struct Notice {
    NoticeID id{0};
    double toldT = 0;   // by CClock::AbsoluteT; the last time, when it came more than once
    std::string words, detail;
    long countL = 1;   // how often it came
    bool readB = false;
    NoticeAction action = {};
    std::optional<double> untilT = {};   // by CClock::SteadyT; from then on it is offered no more

    /** An offer for a while: its button says all, and it is no news. */
    [[nodiscard]] bool IsOffer() const { return untilT.has_value(); }
};

/** The messages to the user in this run: kept until he has read it, and after. Equal ones are counted, not piled up; of
    more than kMost the eldest goes. Other threads tell by MessageAlert or ShowAlert.
    Threads  main.
    Owner    CApp. */
class CNotices {
public:
    static constexpr std::size_t kMost = 200;

    /** `changed` is called after each change, also of a notice's having been read. */
    explicit CNotices(std::function<void()> changed) : i_changed(std::move(changed)) {}

    /** Its action can be taken whenever the notice is read, and again. */
    NoticeID Add(std::string_view words, std::string_view detail, NoticeAction action = {});
    /** An offer leaves the list when it is taken, withdrawn, or its time, by CClock::SteadyT, is over. */
    NoticeID Offer(NoticeAction action, double untilT);
    /** An offer; what was told stays. */
    void Withdraw(NoticeID id);
    /** Does what can be done about it, which is read then; nothing when its time is over. */
    void Act(NoticeID id);
    void SetRead(NoticeID id);
    void SetAllRead();

    /** The eldest first. */
    [[nodiscard]] const std::deque<Notice>& All();

private:
    [[nodiscard]] Notice* Find(NoticeID id);
    NoticeID Enter(Notice notice);
    /** An offer past its time is taken back. */
    void EndOffers();
    void Erase(NoticeID id);

    const std::function<void()> i_changed;
    std::deque<Notice> i_notices;
    std::uint64_t i_lastL = 0;
};
