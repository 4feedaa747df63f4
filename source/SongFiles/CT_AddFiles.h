#pragma once
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Library/CSongDatabase.h"
#include "SongFiles/AddFilesToLibrary.h"
#include "Threads/CHandle.h"
#include "Threads/CT_Preemptive.h"
#include "Threads/CThreadHost.h"

/** Reads the disc for AddFilesToLibrary, looks up what the library has already, and has the songs made on the main
   thread, a block at a time. New songs are saved in the course of it. A task that is cancelled leaves the songs that
    were made. */
class CT_AddFiles final : public CT_Preemptive {
public:
    using Done = std::function<void(OSErr err, const AddedFiles& added)>;

    /** Main thread. */
    CT_AddFiles(CSongDatabase& database, std::vector<std::filesystem::path> paths, Done done);

    /** Before the start: who makes the songs of new files that are known to him. */
    void AskFirst(MakeSong make) { i_make = std::move(make); }

protected:
    OSErr Operate(OSErr err) override;
    OSErr Completion(OSErr err) override;

private:
    /** Of the songs that are there, those that have one of the files. */
    void LookUp(std::span<const SongID> songs);
    [[nodiscard]] SongID SongOf(const SongFileSet& set) const;
    /** Main thread. */
    OSErr MakeSongs(std::span<const SongFileSet> sets);
    /** So many of the new songs enter the library's list, as one block. Main thread. */
    OSErr EnterSongs(std::size_t mostL);

    CHandle<CSongDatabase> i_databaseRef;
    std::shared_ptr<CMutex_SongMap> i_songsRef;
    std::shared_ptr<const LibrarySettings> i_settingsRef;
    std::shared_ptr<const std::atomic<bool>> i_stoppingRef;
    std::vector<std::filesystem::path> i_paths;
    Done i_done;
    MakeSong i_make;
    SongFileSets i_found;
    std::unordered_map<std::string, SongID> i_owners;   // of the files found; id 0 while nobody has them
    std::int32_t i_nextID;                              // songs from here on came after the look-up
    AddedFiles i_added;
    std::unordered_set<std::int32_t> i_answered;   // the songs of i_added
    std::vector<SongID> i_fresh;
    std::size_t i_enteredL = 0;                      // of i_fresh, that stand in the library's list
    double i_enterAtT;                               // then those that were made meanwhile enter it, and are saved
    std::optional<CSongDatabase::Adding> i_adding;   // until all are in
};
