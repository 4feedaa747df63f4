#pragma once
#include <functional>
#include <QObject>
#include <QStringList>

#include "Library/LibraryIDs.h"
#include "Shell/BrowserSetup.h"

class QWidget;
class XActions;

/** Adds files and folders to the library, and their songs to a list of the user's.
    Threads  main. A child of the window; setup and actions outlive it. */
class XFileAdder final : public QObject {
    Q_OBJECT
public:
    /** `shownList` is the one that what the user chooses is added to. */
    XFileAdder(const BrowserSetup& setup, XActions& actions, std::function<PlaylistID()> shownList, QWidget& window);

    void Add(const QStringList& paths, PlaylistID list, RowIndex where);

signals:
    void Told(const QString& text);
    /** One song was to be added, and is in the library now. */
    void SongAdded(SongID song);

private:
    /** The user chooses what to add, from where it was the last time. */
    void AskForFiles();
    void AskForFolder();
    [[nodiscard]] QString FolderToAddFrom() const;

    const BrowserSetup& i_setup;
    const std::function<PlaylistID()> i_shownList;
    QWidget& i_window;
};
