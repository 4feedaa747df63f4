#include "App/CQuitSave.h"

#include <algorithm>
#include <iostream>
#include <utility>

#include "App/CApp.h"
#include "App/CAppLibrary.h"
#include "App/CAppSaves.h"
#include "App/LocalTime.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Files/FSrObjects.h"
#include "Platform/CFolders.h"
#include "Platform/CUserInterface.h"
#include "Threads/WaitUntil.h"

CAppLibrary& CQuitSave::Library() const { return *i_app.Parts().Find<CAppLibrary>(); }

void CQuitSave::Run() {
    const OSErr first = SaveOnce();
    for (OSErr err = first; Failed(err); err = SaveOnce()) {
        Log("### Error saving the database at quit");
        switch (i_app.AsksAtQuit() ? Ask(err) : Wish::kQuit) {
            case Wish::kTryAgain:
                continue;
            case Wish::kElsewhere:
                if (CopyElsewhere()) return;
                continue;
            case Wish::kQuit:
                // Where no copy could be written either he is told, and asked once more: what he changed would be lost.
                if (CopyAnywhere() || !i_app.AsksAtQuit() || std::exchange(i_noCopyB, true)) return;
                continue;
        }
    }
}

OSErr CQuitSave::SaveOnce() {
    CAppLibrary& library = Library();
    const auto written = [this] { return !i_app.Saves().IsWriting(); };
    WaitUntil(written);                  // one that fails leaves the library dirty
    library.Database().FlushChanges();   // what was edited a moment ago has not made it dirty yet
    if (library.Store() == nullptr || !library.Database().IsDirty()) return noErr;
    i_app.Saves().BackOff().NoteSuccess();   // this one does not wait
    if (const OSErr err = library.Save(); Failed(err)) return err;
    WaitUntil(written);
    return library.Database().IsDirty() ? FirstOf(library.Store()->LastSaveErr(), abortErr) : noErr;
}

CQuitSave::Wish CQuitSave::Ask(OSErr err) {
    const CFileRef root = Library().Store()->Root();
    Question question;
    question.title = Localize("Your library could not be saved");
    question.text =
        Localize("The changes that you made could not be written to “%1”.", {root.GetPath().string()}) + "\n" +
        FaultText(err, FaultOf::kFolder, {}) + "\n\n" +
        Localize(
            "You can try again, for instance after making room on the disk, or write a whole copy of the library "
            "into another folder.") +
        " " +
        (i_noCopyB ? std::string()
                   : Localize("If you quit all the same, Vopla writes a copy beside its log, in “%1”.",
                              {CLog::Get().File().parent_path().string()})) +
        std::exchange(i_copyFailure, {});
    question.buttons = {Localize("Try Again"), Localize("Save a Copy Elsewhere…"), Localize("Quit All the Same")};
    question.defaultIndex = static_cast<std::size_t>(Wish::kTryAgain);
    question.safeIndex = static_cast<std::size_t>(Wish::kQuit);
    return static_cast<Wish>(i_app.Ui().Ask(question).buttonIndex);
}

CFileRef CQuitSave::NewFolderIn(const CFileRef& parent) const {
    constexpr std::size_t kToTheSecond = 19;   // of "2024-02-29 12:00:01 +0100"
    std::string name = "Vopla library " + LocalTimeText().substr(0, kToTheSecond);
    std::ranges::replace(name, ':', '.');   // some discs refuse it
    std::string unique = name;
    static_cast<void>(FSrMakeUniqueName(parent, name, unique));
    return CFileRef(parent, unique);
}

bool CQuitSave::CopyElsewhere() {
    const auto chosen = i_app.Ui().ChooseFolder(Localize("Where shall the copy of your library be written?"));
    if (!chosen) return false;
    const CFileRef folder = NewFolderIn(CFileRef(*chosen));
    if (const OSErr err = CopyInto(folder); Failed(err)) {
        i_copyFailure = "\n\n" + Localize("The copy could not be written to “%1”: %2",
                                          {folder.GetPath().string(), FaultText(err, FaultOf::kFolder, {})});
        return false;
    }
    LogF("A copy of the library was saved as <%s>", folder.GetPath().c_str());
    return true;
}

OSErr CQuitSave::CopyInto(const CFileRef& folder) {
    const OSErr err = LogStep(Library().Store()->SaveCopy(folder), "saving a copy of the library", folder.GetPath());
    std::error_code fault;
    if (Failed(err)) std::filesystem::remove(folder.GetPath(), fault);   // if there is nothing in it
    return err;
}

bool CQuitSave::CopyAnywhere() {
    std::string told = Localize("The library could not be saved, nor a copy of it.");
    for (const CFileRef::Path& place : {CLog::Get().File().parent_path(), CFolders::Home(), CFolders::Temp()}) {
        const CFileRef folder = NewFolderIn(CFileRef(place));
        const OSErr err = CopyInto(folder);
        if (!Failed(err)) {
            Tell(Localize("The library could not be saved. A whole copy of it is in “%1”.",
                          {folder.GetPath().string()}));
            return true;
        }
        told += "\n" + FaultText(err, FaultOf::kFolder, folder.GetPath().string());
    }
    Tell(told);
    i_copyFailure = "\n\n" + told + "\n" + Localize("If you quit now, what you changed is lost.");
    return false;
}

void CQuitSave::Tell(const std::string& words) {
    Log(words);
    std::cerr << "vopla: " << words << '\n';
}
