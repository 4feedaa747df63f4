#pragma once
#include <functional>
#include <QScrollArea>
#include <span>
#include <vector>

class CPreferences;
class QFormLayout;

/** One control of a page of the preferences. It carries the key that it edits; what kind of control that is follows from
    the type of the key's value. */
struct PreferenceRow {
    const char* keyZ = nullptr;     // null: a heading, whose words are the label
    const char* labelZ = nullptr;   // null: the key itself
    const char* wordsZ = nullptr;   // one line more, beneath
    // Of numbers, as they are shown: the stored value times `scale`.
    double low = 0, high = 0, step = 1, scale = 1;
    int decimals = 0;
    const char* unitZ = "";
    bool onB = false;                            // a switch that is not stored
    std::span<const char* const> choices = {};   // words for the numbers from 0 on
};

/** A page of settings made from a table, and what its maker adds. What is set holds at once; what somebody else set is
    shown when the window comes to the front.
    Threads  main. `prefs` outlives it. */
class XPreferencePage final : public QScrollArea {
    Q_OBJECT
public:
    explicit XPreferencePage(CPreferences& prefs);

    void Add(std::span<const PreferenceRow> rows);
    void AddHeading(const QString& text);
    /** A control of the maker's own; named for screen readers by its label. */
    void AddWidget(const QString& label, QWidget* widgetP, const char* wordsZ = nullptr);
    void AddWords(const QString& text, const char* lookZ = "quiet");
    /** `show` puts the value that is stored into a control; run by ShowValues. */
    void OnShow(std::function<void()> show);
    void ShowValues();

private:
    void AddSwitch(const PreferenceRow& row);
    void AddChoice(const PreferenceRow& row);
    void AddNumber(const PreferenceRow& row, bool wholeB);
    void AddText(const PreferenceRow& row);

    CPreferences& i_prefs;
    QFormLayout* i_formP;   // a child
    std::vector<std::function<void()>> i_shows;
};
