#include "Shell/XFileAdder.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>

#include "App/CAlerts.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Library/CSongDatabase.h"
#include "Platform/CFolders.h"
#include "Shell/XActions.h"
#include "SongFiles/AddFilesToLibrary.h"
#include "Values/CPreferences.h"
#include "Widgets/FileDialog.h"
#include "Widgets/QtText.h"
#include "Zip/CZipSongMembers.h"

namespace {
constexpr StringPref kPref_AddFolder = "Add Files Folder";   // where the user added from the last time

/** What the dialog shows of a folder: files of some kinds, each by its endings in small letters and in capitals. */
constexpr struct {
    const char* titleZ;
    bool zipB, audioB, graphicsB, videoB;
} kFile_Kinds[] = {
    {N_("Songs"), true, true, true, true},
    {N_("Sound"), false, true, false, false},
    {N_("CD+G graphics"), false, false, true, false},
    {N_("Videos"), false, false, false, true},
    {N_("Zips"), true, false, false, false},
};

QStringList SongFileFilters(bool midiB) {
    QStringList filters;
    for (const auto& kind : kFile_Kinds) {
        QStringList patterns;
        const auto add = [&](const QString& ending) { patterns << '*' + ending << '*' + ending.toUpper(); };
        if (kind.zipB) add(".zip");
        for (const auto& [ending, kinds] : ZipSongEndings())
            if ((kind.audioB && kinds.audioB) || (kind.graphicsB && kinds.graphicsB) || (kind.videoB && kinds.videoB))
                add(QtText(ending));
        if (kind.audioB && midiB)
            for (const char* const endingZ : {".mid", ".midi", ".kar"}) add(endingZ);
        filters << QString("%1 (%2)").arg(QObject::tr(kind.titleZ), patterns.join(' '));
    }
    filters << QString("%1 (*)").arg(QObject::tr("All files"));
    return filters;
}

}   // namespace

XFileAdder::XFileAdder(const BrowserSetup& setup, XActions& actions, std::function<PlaylistID()> shownList,
                       QWidget& window)
    : QObject(&window), i_setup(setup), i_shownList(std::move(shownList)), i_window(window) {
    actions.On(Command::kOpenFiles, [this] { AskForFiles(); });
    actions.On(Command::kOpenFolder, [this] { AskForFolder(); });
}

QString XFileAdder::FolderToAddFrom() const {
    const QString kept = QtText(i_setup.prefs.GetString(kPref_AddFolder));
    return !kept.isEmpty() && QFileInfo(kept).isDir() ? kept : QString::fromStdString(CFolders::Music().string());
}

void XFileAdder::AskForFiles() {
    auto* const dialogP = MakeFileDialog(&i_window, tr("Add Files"), FolderToAddFrom());
    dialogP->setFileMode(QFileDialog::ExistingFiles);
    dialogP->setNameFilters(SongFileFilters(i_setup.prefs.GetBool("Launch Midi Files")));
    dialogP->setOption(QFileDialog::HideNameFilterDetails);
    ShowFileDialog(*dialogP, [this, list = i_shownList()](const QStringList& files) {
        const std::string folder = QFileInfo(files.front()).path().toStdString();
        i_setup.prefs.SetString(kPref_AddFolder, SuperString(folder));
        Add(files, list, SDB_Index_END);
    });
}

void XFileAdder::AskForFolder() {
    auto* const dialogP = MakeFileDialog(&i_window, tr("Add Folder"), FolderToAddFrom());
    dialogP->setFileMode(QFileDialog::Directory);
    dialogP->setOption(QFileDialog::ShowDirsOnly);
    ShowFileDialog(*dialogP, [this, list = i_shownList()](const QStringList& folders) {
        const std::string above = QFileInfo(folders.front()).path().toStdString();
        i_setup.prefs.SetString(kPref_AddFolder, SuperString(above));
        Add(folders, list, SDB_Index_END);
    });
}

void XFileAdder::Add(const QStringList& paths, PlaylistID list, RowIndex where) {
    if (paths.isEmpty()) return;
    std::vector<std::filesystem::path> files;
    for (const QString& path : paths) files.emplace_back(path.toStdString());
    emit Told(tr("Adding…"));
    // The window may have gone with this when the disc has been read.
    const QPointer<XFileAdder> self(this);
    const OSErr err =
        AddFilesToLibrary(i_setup.database, std::move(files), [self, list, where](const AddedFiles& added) {
            if (self.isNull()) return;
            CPlayList* const listP = self->i_setup.database.GetPlayList(list);
            if (listP != nullptr && listP->IsModifyable()) {
                std::vector<PLNewItem> items;
                for (const SongID song : added.songs) items.push_back({song});
                if (!items.empty()) listP->AddItemVec(std::move(items), where);
            }
            emit self->Told(added.newL == 1       ? tr("1 new song")
                            : added.newL > 1      ? tr("%1 new songs").arg(added.newL)
                            : added.songs.empty() ? QString()
                                                  : tr("In the library already"));
            if (added.songs.size() == 1) emit self->SongAdded(added.songs.front());
            if (!added.refused.empty()) MessageAlert(Localize("Some files could not be added."), added.RefusedText());
        });
    if (Failed(err)) MessageAlert(Localize("The files could not be added."), FaultText(err, FaultOf::kStep, {}));
}
