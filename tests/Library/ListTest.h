#pragma once
#include <mutex>
#include <string>
#include <vector>

#include "Core/Assertions.h"
#include "Library/CSongDatabase.h"
#include "Meta/CMetaManager.h"
#include "Platform/CUserInterface_Scripted.h"
#include "Threads/ThreadTest.h"
#include "Values/PreferenceTable.h"

/** What the library asked of the world above. */
class TestDatabaseHost final : public CSongDatabaseHost {
public:
    bool IsReady() const override { return i_readyB; }
    void DirtyChanged(bool dirtyB) override { i_dirty += dirtyB ? "dirty " : "clean "; }
    OSErr RenameListFile(const CPlayList& list, const SuperString& name) override {
        return i_rename ? i_rename(list, name) : i_renameErr;
    }
    SingerID FindListOwner(PlaylistID) override { return i_owner; }
    void StopPlayback() override { ++i_stopsL; }
    bool IsPlaying(PlaylistID, PLItemID item) override { return item == i_playingItem; }
    void SongCached() override { ++i_cachedL; }
    bool IsSaving() const override { return i_savingB; }
    bool MayDelete(SongID song) override { return song != i_playing; }
    bool IsDateAddedReal() const override { return i_dateAddedB; }
    void Notify(std::string_view words, std::string_view detail, std::string_view, std::function<void()> act) override {
        i_told.push_back(std::string(words) + ": " + std::string(detail));
        i_act = std::move(act);
    }
    void StopWarning(BoolPref preference) override { i_stopped = preference.Key(); }

    bool i_readyB = true, i_dateAddedB = false, i_savingB = false;
    std::string i_dirty, i_stopped;
    std::vector<std::string> i_told;
    std::function<void()> i_act;   // what can be done about the last of them
    CUserInterface_Scripted i_ui;
    std::function<OSErr(const CPlayList&, const SuperString&)> i_rename;
    OSErr i_renameErr = noErr;
    SingerID i_owner{SDB_kUninitializedID};
    SongID i_playing{0};
    PLItemID i_playingItem = SDB_kNoItem;
    long i_stopsL = 0, i_cachedL = 0;
};

/** A database with its world; a test in which anything is asserted without being asked for fails. */
class ListTest : public ThreadTest {
protected:
    ListTest() {
        s_asserted.clear();
        SetAssertHandler([](const char* textZ, const char*, long, bool) {
            const std::lock_guard guard(s_lock);
            s_asserted.emplace_back(textZ);
            return true;
        });
        i_databaseP = std::make_unique<CSongDatabase>(i_above);
    }
    ~ListTest() override {
        i_databaseP.reset();
        SetAssertHandler(nullptr);
        EXPECT_EQ(s_asserted, std::vector<std::string>());
    }
    static std::vector<std::string> TakeAsserted() {
        const std::lock_guard guard(s_lock);
        return std::exchange(s_asserted, {});
    }
    CSong& Song(std::string_view name, std::string_view artist = {}) {
        CSong* const songP = i_databaseP->CreateSong();
        songP->Meta().SetString("name"_key, name);
        songP->Meta().SetString("arts"_key, artist);
        return *songP;
    }
    CPlayList& UserList() { return i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "List"); }
    /** Adds a song of this id, which need not exist. */
    static PLItemID Add(CPlayList& list, std::int32_t song, RowIndex where = SDB_Index_END) {
        return list.AddItem({SongID{song}}, where);
    }
    /** The songs' ids in the user order. */
    static std::vector<std::int32_t> Songs(const CPlayList& list) { return SongsOf(list, list.Items()->UserOrder()); }
    static std::vector<std::int32_t> SongsOf(const CPlayList& list, const std::vector<PLItemID>& items) {
        std::vector<std::int32_t> songs;
        for (const PLItemID id : items) songs.push_back(list.Items()->Get(id).value_or(PLRow()).target.idL);
        return songs;
    }
    static std::vector<PLNewItem> NewItems(const std::vector<std::int32_t>& songs) {
        std::vector<PLNewItem> items;
        for (const std::int32_t song : songs) items.push_back({SongID{song}});
        return items;
    }

    CMetaManager i_metaManager;
    TestDatabaseHost i_above;
    std::unique_ptr<CSongDatabase> i_databaseP;

private:
    static inline std::mutex s_lock;
    static inline std::vector<std::string> s_asserted;
};

/** Item ids from numbers. */
inline std::vector<PLItemID> Items(const std::vector<std::int32_t>& numbers) {
    std::vector<PLItemID> ids;
    for (const std::int32_t n : numbers) ids.push_back(PLItemID{n});
    return ids;
}
