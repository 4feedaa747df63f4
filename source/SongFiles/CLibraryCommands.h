#pragma once
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "Library/CPlayListItem.h"
#include "Library/SDB_Selection.h"
#include "SongFiles/CSongUnpacker.h"
#include "SongFiles/CSongZipper.h"
#include "SongFiles/LibraryDialogs.h"
#include "Threads/CHandle.h"
#include "Values/CCFDictionary.h"

class CPlayList;
class CSong;
class CSongDatabase;

/** The commands of the library that a user chooses from a menu: each asks what must be asked, shows how far it is, and
   does the work on the disc by a task. A question stands beside the show, so what it is about may go before the answer:
    ids are kept, not lists.
    Threads  main.
    Owner    the application's library.
    Errors   userCanceledErr when the user does not want it; what the work says. noErr, too, while a question stands: what
             fails behind it is told to the user. A command that goes on by a task answers noErr, and tells `done` how that
             ended. */
class CLibraryCommands {
public:
    using Done = std::function<void(OSErr err)>;

    CLibraryCommands(CSongDatabase& database, CUserInterface& ui);

    /** The songs of these rows leave all lists and the library; their files stay. */
    OSErr RemoveFromLibrary(const SDB_Selection& selection);
    /** Of these rows of the library's list those whose song has another row there. */
    OSErr RemoveDuplicates(const SDB_Selection& selection);
    /** The owned files go to the trash, the songs from all lists. */
    OSErr TrashOriginals(const SDB_Selection& selection, Done done = {});
    enum class WarnLast : bool { kNo, kYes };
    /** Rows of a playlist leave it; of the library's list, their songs leave the library. Asks when one of them plays,
        and stops it first; and, when that is wanted, before a playlist gets empty. */
    OSErr DeleteTracks(const SDB_Selection& selection, WarnLast warnLast = WarnLast::kNo);
    OSErr DeletePlaylist(PlaylistID list);
    /** Asks when another list has this name already. */
    OSErr RenamePlaylist(PlaylistID list, const SuperString& name);
    /** A new list of the user's: `wish`, the kind's title when that is empty, with a number when another has it. */
    CPlayList& NewPlaylist(const std::string& wish);
    /** The user's list of this name, made when there is none. */
    CPlayList& ListNamed(const std::string& name);
    /** The values of `meta` go into all these songs. */
    OSErr Paste(std::span<const SongID> songs, const CCFDictionary& meta);
    /** Shows the folders of the songs' main files, each once, in the desktop's file manager. */
    OSErr Reveal(std::span<const SongID> songs);
    /** Asks for the folder in which a missing song lies, and finds its files there. fnfErr when they are not. */
    OSErr LocateMissing(SongID song);
    OSErr PurgeCache(Done done = {});
    /** Names the songs' files after them, by a task. */
    OSErr ConformNames(std::span<const SongID> songs, Done done = {});
    /** Looks for the files of these songs; of all songs without any. */
    OSErr FindMissing(std::span<const SongID> songs, Done done = {});
    /** Packs each of these songs that has its sound and its graphics beside each other and no zip yet; one task for all
        of them. paramErr when there is none. */
    OSErr Zip(std::span<const SongID> songs, Done done = {});
    /** Asks for a folder, and puts the files that are in the songs' zips there, under names that nothing has there yet;
        the songs keep their zips. paramErr when none has one. */
    OSErr Unzip(std::span<const SongID> songs, Done done = {});
    /** Zip would do something with this song, and Unzip would. No look at the disc. */
    [[nodiscard]] static bool CanZip(const CSong& song);
    [[nodiscard]] static bool CanUnzip(const CSong& song);

    /** The program ends: tasks on songs and zips end as soon as they can, each with whole files. */
    void StopWork();

    [[nodiscard]] CSongZipper& Zipper() noexcept { return i_zipper; }
    [[nodiscard]] CSongUnpacker& Unpacker() noexcept { return *i_unpackerRef; }

private:
    /** The user's list that has this name, whatever its capitals; null without. */
    [[nodiscard]] CPlayList* FindNamed(const SuperString& name, PlaylistID except = PlaylistID{0}) const;
    /** Alerts that what was done with many songs did not go well with all of them; the log names them. */
    [[nodiscard]] Done Telling(const char* wordsZ, Done done);
    [[nodiscard]] std::vector<SongID> Those(std::span<const SongID> songs, bool (*wantedP)(const CSong& song)) const;
    using Work = std::function<OSErr()>;
    /** What `work` says when the answer comes at once; else noErr, and a failure is told. */
    OSErr IfConfirmed(LibraryDialog dialog, const std::string& detail, Work work);
    /** Stops the song that plays before `work`, if it is among them and the user agrees. */
    OSErr OnceStopped(const std::vector<SongID>& songs, Work work);
    /** The same for a folder that the user chooses. */
    OSErr InFolder(const std::string& prompt, std::function<OSErr(const CFileRef& folder)> work);
    /** Runs `ask`, which is given what takes the answer's work: the form of all of these. */
    OSErr Asked(const std::function<void(std::function<void(const Work& work)> answer)>& ask);
    /** Rows by what stands in them: the number of a row that went may be that of another. */
    struct Rows {
        PlaylistID list{0};
        std::vector<std::pair<PLItemID, PLTarget>> rows;
    };
    [[nodiscard]] Rows RowsOf(const SDB_Selection& selection) const;
    [[nodiscard]] SDB_Selection StillThere(const Rows& rows) const;
    /** For a question: the first few by their names. */
    [[nodiscard]] std::string NamesOf(std::span<const SongID> songs) const;
    OSErr Locate(SongID song, const CFileRef& folder);
    /** The songs of the rows, told as what they are. */
    [[nodiscard]] std::vector<SongID> SongsOf(const SDB_Selection& selection) const;
    /** Work that would disturb a sort comes after it. */
    OSErr OnceSorted(Work work);
    OSErr RemoveSongs(const std::vector<SongID>& songs);

    CSongDatabase& i_database;
    CUserInterface& i_ui;
    const std::shared_ptr<CBusySongs> i_busyRef = std::make_shared<CBusySongs>();
    CSongZipper i_zipper;
    const std::shared_ptr<CSongUnpacker> i_unpackerRef;   // shared with tasks that may outlive this
    CHandled<CLibraryCommands> i_self{this};              // for late answers
};
