#include "Storage/CLibraryLoader.h"

#include <algorithm>
#include <limits>
#include <thread>

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Storage/CLoadingScope.h"
#include "Storage/CReportXMLErr.h"
#include "Storage/CScopedClock.h"
#include "Storage/CSongFileReader.h"
#include "Storage/LibraryFileName.h"
#include "Storage/SDB_ForEach_LoadLibrary.h"
#include "Threads/ThreadInfo.h"

namespace {

/** Major and minor as one number that can be compared. */
std::int64_t VersionOf(std::int64_t majorL, std::int64_t minorL) {
    return std::clamp<std::int64_t>(majorL, 0, 0xFFFF) << 16 | std::clamp<std::int64_t>(minorL, 0, 0xFFFF);
}
constexpr std::int64_t kIndex_Version = LibraryIndex::kMajor << 16 | LibraryIndex::kMinor;

std::int64_t VersionOf(const LibraryIndex& index) { return VersionOf(index.majorL, index.minorL); }

}   // namespace

OSErr CLibraryLoader::Load(LibraryFileMap& files, LibraryReport& report) {
    i_reportP = &report;
    const CScopedClock total("Total Database Load time");
    const CLoadingScope loading(i_database);
    i_host.ShowProgress("Loading Library");
    if (const OSErr err = WaitUntilReadable(); Failed(err)) return err;
    LibraryImage image;
    const OSErr walked = Read(image);
    if (i_songs.IsKeptBack()) {
        bool tryB = false;   // songs were made already: the next start tries again
        return TellKeptBack(CFileRef(i_places.root, "Songs.vlb"), i_songsErr, false, tryB);
    }
    report.storesB = image.storesB;
    if (const OSErr err = AskIfTooNew(image); Failed(err)) return err;
    report.wholeB = i_songs.IsWhole();
    report.err = FirstOf(i_songsErr, walked == fnfErr ? noErr : walked);
    for (const UnreadFile& file : image.unread) {
        report.err = FirstOf(report.err, file.err);
        report.damaged.push_back(file.file);
        report.problems.push_back(FaultText(file.err, file.file.GetPath()));
        CReportXMLErr::Report(i_database.Host(), file.file, file.err);
    }
    if (Failed(i_songsErr) && i_songsErr != fnfErr)
        Problem("the songs could not all be read: " + FaultText(i_songsErr, i_places.root.GetPath() / "Songs.vlb"));
    report.emptyB =
        i_songsErr == fnfErr && !image.index && image.lists.empty() && image.venues.empty() && image.unread.empty();
    MendSongs();
    if (Failed(walked) && walked != fnfErr)
        Problem("the library's folder could not be read: " +
                FaultText(walked, FaultOf::kFolder, i_places.root.GetPath().string()));

    CPlaylistLoader loader(i_database);
    loader.DropMissing(i_songs.IsWhole());
    CSingerLoader singers(i_database, loader, files, report.problems);
    LoadIndex(image);
    NoteIDs(image);
    for (VenueFolder& venue : image.venues) singers.LoadVenue(venue);
    LoadLists(image, loader, files);
    i_host.ShowProgress("Calculating Playlist durations…");
    for (CPlayList* const listP : i_database.PlayLists()) listP->CalculateDuration();
    i_host.ShowProgress("Finalizing Playlists…");
    Verify(image, loader, singers.Changed());
    return noErr;
}

OSErr CLibraryLoader::WaitUntilReadable() {
    for (bool tryB = true; tryB;) {
        CFileRef file;
        const OSErr err = i_songs.CanRead(file);
        if (!Failed(err)) return noErr;
        if (const OSErr told = TellKeptBack(file, err, true, tryB); !tryB) return told;
    }
    return abortErr;
}

/** Neither damage nor an empty library: nothing is made anew, and nothing saved over it. */
OSErr CLibraryLoader::TellKeptBack(const CFileRef& file, OSErr err, bool againB, bool& tryB) {
    enum Button : std::size_t { kQuit, kTryAgain };
    Question question;
    question.title = Localize("Your library cannot be read.");
    question.text = FaultText(err, file.GetPath());
    if (i_reportP->problems.empty() || i_reportP->problems.back() != question.text) Problem(question.text);
    i_reportP->err = err;
    i_reportP->wholeB = false;
    question.text += "\n" + Localize("Nothing is lost: the files stay as they are.");
    question.buttons = {Localize("Quit")};
    if (againB) question.buttons.emplace_back(Localize("Try Again"));
    question.defaultIndex = question.buttons.size() - 1;
    question.safeIndex = kQuit;   // nobody in front: it must not ask for ever
    tryB = i_host.Ask(question).buttonIndex == kTryAgain && againB;
    return err;
}

/** The lists are read by a thread of their own while the songs are made here. */
OSErr CLibraryLoader::Read(LibraryImage& image) {
    if (i_songsErr = i_songs.FinishRestore(); Failed(i_songsErr)) return noErr;   // neither this library nor that one
    OSErr walked = noErr;
    std::jthread walker([&] {
        TagThread(NextThreadIndex(), true);
        walked = SDB_ForEach_LoadLibrary(i_places.root).Run(image);
    });
    i_songsErr = i_songs.Load();
    walker.join();
    return walked;
}

OSErr CLibraryLoader::AskIfTooNew(const LibraryImage& image) {
    const bool indexB = image.index && VersionOf(*image.index) > kIndex_Version;
    if (!indexB && !i_songs.IsTooNew()) return noErr;
    i_reportP->tooNewB = true;
    Question question;
    question.title = Localize("This library is of a later Vopla");
    question.text = i_songs.IsTooNew()
                        ? i_songs.TooNewText().UTF8()
                        : TooNewWords(static_cast<std::uint32_t>(VersionOf(*image.index)), kIndex_Version).UTF8();
    Problem(question.text);
    question.text += "\n" + Localize("If you continue, nothing that you change is saved.");
    question.buttons = {Localize("Quit"), Localize("Continue")};
    return i_host.Ask(question).buttonIndex == 1 ? noErr : userCanceledErr;
}

/** Damage is told before anything else is asked. What a whole copy has is added to what could be read: nothing is written
    over, since the damaged file is set aside by the first save, and the lists stay those of now. */
void CLibraryLoader::MendSongs() {
    const bool goneB = i_songsErr == fnfErr && !i_reportP->emptyB;
    if (!goneB && !i_songs.AreSongsDamaged()) return;
    const std::string kept =
        "\n" + Localize("The damaged file stays beside the new one, with “damaged” and the date in its name.");
    const std::string text =
        (goneB ? Localize("“Songs.vlb”, the file with the songs of your library, is missing.")
               : Localize("“Songs.vlb”, the file with the songs of your library, is damaged.")) +
        "  " + LocalizeCount("%1 song could be read.", "%1 songs could be read.", i_database.Songs()->Count());
    i_host.ShowProgress(Localize("Looking for a whole copy of the library…"));
    auto keptRef = std::make_shared<CKeptSongs>();
    const OSErr found = keptRef->Find(i_places.root);
    if (goneB && (Failed(found) || keptRef->Count() == 0)) return;   // there never was one
    i_changedB = true;
    if (Failed(found)) {
        Problem("no whole copy of the songs was found");
        ShowAlert(Localize("Your library is damaged."),
                  text + "  " +
                      Localize("There is no whole copy of it.  Files of the music folder that no song names are taken "
                               "in again.") +
                      kept);
        return;
    }
    enum Button : std::size_t { kBringBack, kGoOn };
    Question question;
    question.title = Localize("Your library is damaged.");
    question.text = text + "  " +
                    Localize("A whole copy of %1 has %2.  Shall the songs that are missing come back from it?",
                             {keptRef->Date(), std::to_string(keptRef->Count())}, "a date, a number of songs") +
                    (goneB ? "" : kept);
    question.buttons = {Localize("Bring Back"), Localize("Go On Without")};
    Problem(question.text);
    if (i_host.Ask(question).buttonIndex == kGoOn) {
        i_reportP->keptRef = std::move(keptRef);
        return;
    }
    Problem(std::to_string(i_songs.LoadMissing(*keptRef)) + " songs came back from " +
            keptRef->Copy().GetPath().string());
}

void CLibraryLoader::LoadIndex(LibraryImage& image) {
    if (!image.index) return;
    LibraryIndex& index = *image.index;
    constexpr auto kMost = static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
    if (index.nextID > 1 && index.nextID < kMost) i_database.NoteID(static_cast<std::int32_t>(index.nextID) - 1);
    i_database.SetFacts({index.currentVenue, std::move(index.searchPaths), std::move(index.otherKeys)});
}

/** Every id of the files, before the first new one is given out: whoever comes twice, or without one, must not take
    that of somebody who comes later. */
void CLibraryLoader::NoteIDs(const LibraryImage& image) {
    const auto note = [this](std::uint32_t id) { i_database.NoteID(Number(PlaylistIDOf(id))); };
    const auto noteLists = [&note](const std::vector<PlaylistFile>& lists) {
        for (const PlaylistFile& list : lists) note(list.record.ID());
    };
    const auto noteSinger = [&note](const SingerRecord& singer) {
        for (const std::uint32_t id : {singer.ID(), singer.tonightID, singer.favoritesID, singer.historyID}) note(id);
    };
    noteLists(image.lists);
    if (image.index)
        for (const PlaylistRecord& list : image.index->playlists) note(list.ID());
    for (const VenueFolder& venue : image.venues) {
        for (const SingerRecord& singer : venue.together) noteSinger(singer);
        for (const SingerFolder& folder : venue.singers) {
            if (folder.singer) noteSinger(*folder.singer);
            noteLists(folder.lists);
        }
    }
}

void CLibraryLoader::LoadLists(LibraryImage& image, CPlaylistLoader& loader, LibraryFileMap& files) {
    std::size_t doneL = 0;
    // Of two files with one id the one under its list's name is no copy.
    std::stable_partition(image.lists.begin(), image.lists.end(), [](const PlaylistFile& file) {
        return file.file.GetPath().stem() == LibraryFileName(file.record.Name());
    });
    for (const PlaylistFile& file : image.lists) {
        i_host.ShowSteps(++doneL, image.lists.size());
        const std::int64_t number = file.record.Type();
        const bool keptB = number == static_cast<std::int64_t>(kSourceDB_CD) ||
                           Is_MusicStore_PlayList(static_cast<SourceType>(std::clamp<std::int64_t>(number, 0, 99)));
        const SourceType type = keptB ? static_cast<SourceType>(number) : kSourceDB_PLAYLIST;
        CPlayList* const listP = loader.Load(file.record, type);
        if (listP == nullptr) continue;
        files.lists[listP->ID()] = file.file;
        if (listP->ID() == PlaylistIDOf(file.record.ID())) continue;
        Problem("the playlist “" + listP->Name().UTF8() + "” had an id that another one has, or none");
        i_changedB = true;
    }
    if (!image.index) return;
    for (PlaylistRecord& record : image.index->playlists) {
        const bool libraryB = record.Type() == static_cast<std::int64_t>(kSourceDB_LIBRARY) ||
                              record.ID() == static_cast<std::uint32_t>(Number(kPlaylistID_Library));
        if (libraryB) {
            LogF("Building Playlist: %s", record.Name().CString());
            loader.Fill(i_database.Library(), record);
        } else if (record.items && i_database.GetPlayList(PlaylistIDOf(record.ID())) == nullptr) {
            (void)loader.Load(record, kSourceDB_PLAYLIST);   // an old library, with all of it in one file
            i_changedB = true;
        } else if (i_database.GetPlayList(PlaylistIDOf(record.ID())) == nullptr) {
            LogF("Playlist %s somehow came out uninitialized", record.Name().CString());
        }
        record.items.reset();   // a million rows are not needed twice
    }
}

void CLibraryLoader::Verify(const LibraryImage& image, const CPlaylistLoader& loader, bool changedB) {
    const CScopedClock clock("Time to verify database");
    i_changedB = i_changedB || changedB;
    std::vector<SongID> without;
    const std::vector<SongID> ids = i_database.Songs()->Ids();
    for (const SongID id : ids)
        i_database.WithSong(id, [&](const CSong& song) {
            if (song.LibraryItem() == SDB_kNoItem) without.push_back(id);
        });
    std::ranges::sort(without);
    (void)i_database.AddSongsToLibrary(without);
    if (!without.empty() && image.index) Problem(std::to_string(without.size()) + " songs had no row in the library");
    if (loader.Lost() != 0) {
        Problem(std::to_string(loader.Lost()) + " rows named songs that are not there");
        i_host.SongsLost(loader.Lost());
    }
    const bool olderB = i_songs.IsOlder() || (image.index && VersionOf(*image.index) < kIndex_Version);
    i_changedB = i_changedB || !without.empty() || loader.Lost() != 0;
    std::string& reason = i_reportP->dirtyReason;
    if (olderB)
        reason = i_changedB ? "new db version and updated playlists" : "new db version";
    else if (i_changedB)
        reason = "updated playlists";
    else
        reason = i_host.WhySaveAnew();
}

void CLibraryLoader::Problem(std::string words) {
    LogF("### %s", words.c_str());
    i_reportP->problems.push_back(std::move(words));
}
