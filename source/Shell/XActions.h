#pragma once
#include <functional>
#include <map>
#include <QAction>
#include <QObject>

#include "Shell/CKeyMap.h"

class QKeyEvent;
class QWidget;

/** The commands as the toolkit's actions: menus, buttons and keys share one each.
    Keys without Control, Alt or Meta never leave a text field that has the focus, whatever they are mapped to. Commands of
    the show work in every window and dialog, by Space, function keys and keys with Control or Alt; their other keys, and
    letters and digits of any command, work in the video windows alone unless single keys are on (IsOfShow). Return presses
    the button that has the focus; Space only a box that was reached by Tab.
    Threads  main. Lives as long as the windows that it is attached to. */
class XActions final : public QObject {
    Q_OBJECT
public:
    explicit XActions(CKeyMap& keys);
    ~XActions() override;

    [[nodiscard]] QAction& Get(Command command) const { return *i_actions.at(command); }
    /** What the command does, one each; and when it can be given, without a rule always. Registered by the owner of
        the deed. */
    void On(Command command, std::function<void()> work, std::function<bool()> ifB = {});
    /** Something has changed that the rules ask. */
    void Refresh();
    /** Its keys of CommandScope::kEverywhere work in this window from now on. */
    void AttachEverywhere(QWidget& window);
    /** The keys of one scope work while `widget`, or what is in it, has the focus. */
    void Attach(CommandScope scope, QWidget& widget);

    [[nodiscard]] CKeyMap& Keys() const { return i_keys; }
    /** Every key is a command in every window, as long as no text is edited. */
    void SetSingleKeys(bool onB);
    /** The map was changed: the actions take its keys. A key in conflict works for neither. */
    void KeysChanged();

signals:
    void Remapped();

protected:
    bool eventFilter(QObject* watchedP, QEvent* eventP) override;

private:
    /** With a menu open, the keys of the show mean the show: it closes, and the command follows. */
    bool TakesFromMenu(const QKeyEvent& press);
    /** It is typed rather than a command, in a window that is no video window. */
    [[nodiscard]] bool IsTyped(const QKeyEvent& press) const;
    [[nodiscard]] const CommandRow* CommandOf(const QKeyEvent& press) const;

    CKeyMap& i_keys;
    bool i_singleKeysB = false;
    const QObject* i_tabbedP = nullptr;      // has the focus, and got it by Tab; compared, never used
    std::map<Command, QAction*> i_actions;   // children
    std::map<Command, std::function<bool()>> i_rules;
};

/** Without single-key commands `key` of this command works, if anywhere, in the video windows alone. */
[[nodiscard]] bool IsTypedOutsideVideo(const CommandRow& row, const QKeySequence& key);
/** The keys as people read them, "F, F11"; empty without. */
[[nodiscard]] QString KeysText(const CKeyMap::Keys& keys);
