#pragma once
#include <functional>
#include <QScrollArea>
#include <span>
#include <vector>

#include "Values/PreferenceTable.h"

class CPreferences;
class QFormLayout;

/** One control of a page of the preferences; what kind of control that is follows from the type of its preference. */
struct PreferenceRow {
    AnyPref pref = {};              // none: a heading, whose words are the label
    const char* labelZ = nullptr;   // looked up in the catalogue, as all texts here
    const char* wordsZ = nullptr;   // one line more, beneath
    // Of numbers, as they are shown: the stored value times `scale`.
    double low = 0, high = 0, step = 1, scale = 1;
    int decimals = 0;
    const char* unitZ = "";
    std::span<const char* const> choices = {};   // words for the numbers from 0 on
};

/** A page of settings made from a table, and what its maker adds. A setting holds at once; one that somebody else
    changed is shown when the window comes to the front.
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
    void AddSwitch(const PreferenceRow& row, BoolPref pref);
    void AddChoice(const PreferenceRow& row, LongPref pref);
    /** `get` and `set` are in units of what is stored. */
    void AddNumber(const PreferenceRow& row, const std::function<double()>& get, std::function<void(double)> set);
    void AddText(const PreferenceRow& row, StringPref pref);

    CPreferences& i_prefs;
    QFormLayout* i_formP;   // a child
    std::vector<std::function<void()>> i_shows;
};
