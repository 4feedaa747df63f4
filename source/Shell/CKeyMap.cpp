#include "Shell/CKeyMap.h"

#include <QString>
#include <QStringList>

#include "Widgets/QtText.h"

namespace {

CKeyMap::Keys Parse(std::string_view names) {
    CKeyMap::Keys keys;
    for (const QString& name : QtText(names).split(' ', Qt::SkipEmptyParts)) {
        const QKeySequence key = QKeySequence::fromString(name, QKeySequence::PortableText);
        // A name that Qt does not know reads as a key without a number.
        if (!key.isEmpty() && key[0].key() != Qt::Key_unknown) keys.append(key);
    }
    return keys;
}

std::string Names(const CKeyMap::Keys& keys) {
    QStringList names;
    for (const QKeySequence& key : keys) names << key.toString(QKeySequence::PortableText);
    return names.join(' ').toStdString();
}

}   // namespace

CKeyMap::CKeyMap() {
    for (const CommandRow& row : CommandTable()) Reset(row.command);
}

CKeyMap::Keys CKeyMap::FactoryKeys(Command command) { return Parse(RowOf(command).keys); }

void CKeyMap::SetKeys(Command command, const Keys& keys) {
    Keys clean;
    for (const QKeySequence& key : keys)
        if (!key.isEmpty() && !clean.contains(key)) clean.append(key);
    i_keys[Index(command)] = clean;
}

std::vector<Command> CKeyMap::ConflictsOf(Command command, const QKeySequence& key) const {
    std::vector<Command> found;
    for (const CommandRow& row : CommandTable())
        if (row.command != command && ScopesMeet(row.scope, RowOf(command).scope) && KeysOf(row.command).contains(key))
            found.push_back(row.command);
    return found;
}

std::vector<Command> CKeyMap::ConflictsOf(Command command) const {
    std::vector<Command> found;
    for (const QKeySequence& key : KeysOf(command))
        for (const Command other : ConflictsOf(command, key))
            if (std::ranges::find(found, other) == found.end()) found.push_back(other);
    return found;
}

CCFDictionary CKeyMap::ToDictionary() const {
    CCFDictionary dictionary;
    for (const CommandRow& row : CommandTable())
        if (!IsFactory(row.command)) dictionary.Set(row.id, CCFValue(SuperString(Names(KeysOf(row.command)))));
    return dictionary;
}

void CKeyMap::FromDictionary(const CCFDictionary& dictionary) {
    for (const CommandRow& row : CommandTable()) {
        const CCFValue* const valueP = dictionary.Find(row.id);
        if (const SuperString* const namesP = valueP != nullptr ? valueP->String() : nullptr; namesP != nullptr)
            SetKeys(row.command, Parse(*namesP));
        else
            Reset(row.command);
    }
}
