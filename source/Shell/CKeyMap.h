#pragma once
#include <array>
#include <QKeySequence>
#include <QList>
#include <vector>

#include "Shell/Commands.h"
#include "Values/CCFDictionary.h"

/** Which keys a command has: the factory's, or the user's. A key that two commands of meeting scopes have is a
    conflict, and works for neither until one gives it up.
    Threads  main. */
class CKeyMap {
public:
    using Keys = QList<QKeySequence>;

    /** The factory's keys. */
    CKeyMap();

    [[nodiscard]] const Keys& KeysOf(Command command) const { return i_keys[Index(command)]; }
    /** Equal keys and empty ones are dropped. */
    void SetKeys(Command command, const Keys& keys);
    void Reset(Command command) { SetKeys(command, FactoryKeys(command)); }
    [[nodiscard]] bool IsFactory(Command command) const { return KeysOf(command) == FactoryKeys(command); }
    [[nodiscard]] static Keys FactoryKeys(Command command);

    /** The other commands that have one of this command's keys, where both could be meant. */
    [[nodiscard]] std::vector<Command> ConflictsOf(Command command) const;
    /** The commands that would be in conflict with `command` if it had `key`. */
    [[nodiscard]] std::vector<Command> ConflictsOf(Command command, const QKeySequence& key) const;

    /** What differs from the factory, by the ids of the commands: portable key names between blanks. */
    [[nodiscard]] CCFDictionary ToDictionary() const;
    /** From the preferences; what is no key name, and commands that are not known, are passed over. */
    void FromDictionary(const CCFDictionary& dictionary);

private:
    static std::size_t Index(Command command) { return static_cast<std::size_t>(command); }

    std::array<Keys, kCommand_Count> i_keys;
};
