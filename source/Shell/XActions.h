#pragma once
#include <functional>
#include <map>
#include <QAction>
#include <QObject>

#include "Shell/CKeyMap.h"

class QWidget;

/** The commands as the toolkit's actions: menus, buttons and keys share one each.
    Keys without Control, Alt or Meta never leave a text field that has the focus, whatever they are mapped to; Return
   presses the button that has it. Threads  main. Lives as long as the windows that it is attached to. */
class XActions final : public QObject {
    Q_OBJECT
public:
    explicit XActions(CKeyMap& keys);
    ~XActions() override;

    [[nodiscard]] QAction& Get(Command command) const { return *i_actions.at(command); }
    /** What the command does; one each. */
    void On(Command command, std::function<void()> work);
    /** Its keys of CommandScope::kEverywhere work in this window from now on. */
    void AttachEverywhere(QWidget& window);
    /** The keys of one scope work while `widget`, or what is in it, has the focus. */
    void Attach(CommandScope scope, QWidget& widget);

    [[nodiscard]] CKeyMap& Keys() const { return i_keys; }
    /** The map was changed: the actions take its keys. A key in conflict works for neither. */
    void KeysChanged();

signals:
    void Remapped();

protected:
    bool eventFilter(QObject* watchedP, QEvent* eventP) override;

private:
    CKeyMap& i_keys;
    std::map<Command, QAction*> i_actions;   // children
};

/** The keys as people read them, "F, F11"; empty without. */
[[nodiscard]] QString KeysText(const CKeyMap::Keys& keys);
