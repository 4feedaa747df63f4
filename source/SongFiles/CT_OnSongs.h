#pragma once
#include <functional>
#include <memory>
#include <vector>

#include "Library/CSongDatabase.h"
#include "Library/CSongFiles.h"
#include "Threads/CHandle.h"
#include "Threads/CT_Preemptive.h"
#include "Threads/CThreadHost.h"

/** Base of the tasks that work on the files of many songs, one after the other: shows itself in the task list, ends
    when the user wants it, and keeps no lock and no song over its work on the disc.
    Threads  made on the main thread; OnSong and AtEnd on the task's; what OnMain is given, on the main one. */
class CT_OnSongs : public CT_Preemptive {
public:
    /** How it ended: noErr, userCanceledErr, or the first failure. Main thread; not when the database has gone. */
    using Done = std::function<void(OSErr err)>;

protected:
    /** `nameZ`, marked N_, is its line in the task list. */
    CT_OnSongs(const char* nameZ, CSongDatabase& database, std::vector<SongID> songs, Done done);

    /** Is there work on this song? Asked under the lock of the map of songs, before its files are copied. */
    [[nodiscard]] virtual bool Wants(const CSong& /*song*/) const { return true; }
    /** A failure ends the task: what concerns one song alone is noted, and answered with noErr. */
    virtual OSErr OnSong(CSongFiles& files) = 0;
    /** After the last song, also of a task that ended early. */
    virtual OSErr AtEnd(OSErr err) { return err; }
    /** Waits. abortErr when the database has gone. No lock may be held. */
    OSErr OnMain(const char* nameZ, const std::function<OSErr(CSongDatabase& database)>& work);
    /** The user wants its end, or the program ends. */
    [[nodiscard]] bool IsCancelled() const;
    /** Before the start: nobody asked for this task, so that it is not shown. */
    void BeQuiet() noexcept { i_quietB = true; }
    void ShowText(const std::string& text) {
        if (i_viewP) i_viewP->SetText(text);
    }
    [[nodiscard]] const LibrarySettings& Settings() const noexcept { return *i_settingsRef; }

private:
    OSErr Operate(OSErr err) final;
    OSErr Completion(OSErr err) final;

    CHandle<CSongDatabase> i_databaseRef;
    std::shared_ptr<CMutex_SongMap> i_songsRef;
    std::shared_ptr<const LibrarySettings> i_settingsRef;
    std::shared_ptr<const std::atomic<bool>> i_stoppingRef;
    std::vector<SongID> i_songs;
    Done i_done;
    bool i_quietB = false;
    std::unique_ptr<CTaskView> i_viewP;
};
