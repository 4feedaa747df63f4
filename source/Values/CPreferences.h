#pragma once
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "Core/CWatchers.h"
#include "Files/ReplaceFile.h"
#include "Threads/CHandle.h"
#include "Threads/CMutex.h"
#include "Values/CCFPrefDictionary.h"

/** Where the preferences are: the file, and the name that it had in older versions, read when the first is missing. */
struct PrefsFiles {
    std::filesystem::path file, oldFile;
};
/** The two names in `folder`. */
[[nodiscard]] PrefsFiles PrefsFilesFor(const std::filesystem::path& folder);

/** Where a window stood. */
struct WindowRecord {
    std::string name;
    short topS = 0, leftS = 0, bottomS = 0, rightS = 0;
    bool visibleB = false;
};

struct PrefsOptions {
    FileReplacer replace = &ReplaceFile;
    /** Given when "Music Library Location" or "Cache Folder Location" is not stored; an empty path stores none. */
    std::filesystem::path musicFolder = {}, cacheFolder = {};
    /** The factory columns, a property list; without the file there are none. */
    std::filesystem::path defaultColumns = {};
    /** What is known only now: asked by Gather, without a lock. */
    std::function<std::vector<WindowRecord>()> windows = {};
    std::function<CCFDictionary()> atSave = {};
    /** Something is to be saved: called by whoever set it, without a lock. */
    std::function<void()> onDirty = {};
    bool saveAtEndB = true;   // the destructor saves what has changed
};

class CPreferences;

/** Work that follows settings (CPreferences::Follow), until it goes.
    Threads  main.
    Owner    whoever follows; it may outlive the preferences. */
class CPrefFollower {
public:
    explicit CPrefFollower(std::function<void()> work) : i_state(new State{std::move(work)}) {}
    ~CPrefFollower();
    CPrefFollower(const CPrefFollower&) = delete;
    CPrefFollower& operator=(const CPrefFollower&) = delete;

private:
    friend class CPreferences;
    struct State {
        const std::function<void()> work;
        PrefKeys keys = {};   // what the work read the last time
    };
    const std::shared_ptr<State> i_state;   // kept by the telling: the work may end its own follower
    CHandle<CPreferences> i_prefs;
};

/** The settings of the program: one property list with the keys of PreferenceTable, kept as a person may have edited
    it. Keys that the table does not know stay in the file; a value of a wrong type gives way to the default.
    Threads  any may read, ask and set; the constructor, Gather, Save and the destructor on one thread at a time; Write on
             any; Follow, and the work of the followers, on the main one.
    Errors   the show goes on with defaults when the file cannot be read. The first save moves such a file beside, so
             that it is never written over; while that fails, saves fail too. */
class CPreferences final : public CCFPrefDictionary {
public:
    /** Loads, corrects, and stores the defaults. */
    explicit CPreferences(PrefsFiles files, PrefsOptions options = {});
    ~CPreferences() override;

    /** How the reading of the file ended; fnfErr is the first start. */
    OSErr LoadStatus() const noexcept { return i_loadErr; }
    /** Does `work` now, and again, later, whenever a setting has changed that it read the last time. However many settings
        change at once, it is done once; a setting that it does not read costs it nothing. */
    [[nodiscard]] std::unique_ptr<CPrefFollower> Follow(std::function<void()> work);

    /** Writes the file when something has changed. After a failure the next save tries again. */
    OSErr Save();
    /** What a save has to write; nothing when the file holds it all. */
    [[nodiscard]] std::optional<CCFDictionary> Gather();
    /** Writes what was gathered. One at a time; this object outlives it. */
    OSErr Write(const CCFDictionary& content);

    /** The stored place of a window, and whether it was visible; nothing when none is stored. */
    [[nodiscard]] std::optional<WindowRecord> Window(const std::string& name) const;
    [[nodiscard]] std::filesystem::path MusicFolder() const;
    [[nodiscard]] std::filesystem::path CacheFolder() const;

    // The hot ones; port and time for the servers to come.
    [[nodiscard]] short GetBrowserFontSize() const { return GetShort("Browser Font Size"); }
    [[nodiscard]] std::int32_t GetWebServerPort() const { return GetLong("Web server port number"); }
    [[nodiscard]] double GetHTTPTimeoutT() const {
        return static_cast<double>(GetLong("freedb server timeout (seconds)"));
    }

protected:
    void OnStored(std::string_view key, const CCFValue& value) override;
    void OnChanged(std::string_view key) override;

private:
    friend class CPrefFollower;
    static void Run(const CPrefFollower& follower);
    void TellFollowers();

    CCFDictionary Load();
    void StoreFolder(CCFDictionary& content, std::string_view key, const std::filesystem::path& folder) const;
    OSErr MoveAside();

    PrefsFiles i_files;
    PrefsOptions i_options;
    OSErr i_loadErr = noErr;
    std::mutex i_saveLock;       // one save at a time; held over the writing
    bool i_keepAsideB = false;   // the file did not read and stands still in its place; guarded by i_saveLock
    CMutexT<std::optional<CCFDictionary>> i_written;   // what the file holds, where that is known
    CMutexT<PrefKeys> i_changed;                       // that the followers were not told of yet
    CWatchers<CPrefFollower> i_followers;
    CHandled<CPreferences> i_self{this};   // what the telling comes back by
};
