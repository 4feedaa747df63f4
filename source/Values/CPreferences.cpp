#include "Values/CPreferences.h"

#include <algorithm>
#include <array>

#include "Core/CLog.h"
#include "Threads/CallOnMain.h"
#include "Values/FileRefDictionary.h"
#include "Values/PreferenceCorrections.h"
#include "Values/PreferenceTable.h"
#include "Values/PropertyList.h"

namespace {

constexpr std::size_t kPrefs_MaxBytes = std::size_t{64} << 20;
constexpr DictionaryPref kMusicFolder = "Music Library Location";
constexpr DictionaryPref kCacheFolder = "Cache Folder Location";
constexpr DictionaryPref kColumns = "Default Columns";
constexpr std::int64_t kFileRef_Path = 4;   // the form of a file reference that names a path

struct SwitchRow {
    BoolPref pref;
    LogSwitch which;
};
constexpr SwitchRow kLogSwitches[] = {
    {"Enable Logging", LogSwitch::kLogging},
    {"Log Threads", LogSwitch::kThreads},
    {"Log Networking", LogSwitch::kNetworking},
    {"Log Memory", LogSwitch::kMemory},
};

std::filesystem::path PathOf(const CCFDictionary& reference) {
    CFileRef file;
    if (reference.Empty() || Failed(ReadFileRef(reference, file)) || file.IsEmpty()) return {};
    if (!file.HasPath() && Failed(file.Fill(CFileRef::kFill_PATH))) return {};
    return file.GetPath();
}

/** The dictionary of the file, untouched on failure. */
OSErr ReadDictionary(const std::filesystem::path& file, CCFDictionary& content) {
    CCFValue root(false);
    if (const OSErr err = ReadPropertyListFile(file, root, kPrefs_MaxBytes); Failed(err)) return err;
    const CCFDictionary* dictionaryP = root.Dictionary();
    if (dictionaryP == nullptr) return paramErr;
    content = *dictionaryP;
    return noErr;
}

std::string RectangleKey(const std::string& name) { return name + " Window Rectangle"; }
std::string VisibleKey(const std::string& name) { return name + " Window Visible"; }

}   // namespace

PrefsFiles PrefsFilesFor(const std::filesystem::path& folder) {
    return {folder / "Vopla X Preferences.plist", folder / "Vopla Preferences.xml"};
}

CPreferences::CPreferences(PrefsFiles files, PrefsOptions options)
    : i_files(std::move(files)), i_options(std::move(options)) {
    Log("initting prefs");
    Log("clearing window rects");
    Replace(Load());
}

CPreferences::~CPreferences() {
    if (!i_options.saveAtEndB) return;
    try {
        (void)Save();   // it logged what failed, and there is no one left to try again
    } catch (const std::exception& problem) {
        LogF("!!Failed!! Saving Preferences: %s", problem.what());
    }
}

CCFDictionary CPreferences::Load() {
    CCFDictionary content;
    Log("loading prefs file");
    i_loadErr = ReadDictionary(i_files.file, content);
    if (!Failed(i_loadErr)) i_written.Set(content);
    if (i_loadErr == fnfErr && !i_files.oldFile.empty()) {
        i_loadErr = ReadDictionary(i_files.oldFile, content);
        // The old file stays where it is, so a broken one is lost by nothing that is saved here.
        if (Failed(i_loadErr) && i_loadErr != fnfErr)
            (void)LogStep(i_loadErr, "loading prefs file, defaults are taken", i_files.oldFile);
    } else if (Failed(i_loadErr) && i_loadErr != fnfErr) {
        (void)LogStep(i_loadErr, "loading prefs file, defaults are taken", i_files.file);
        const std::scoped_lock guard(i_saveLock);
        i_keepAsideB = true;
    }
    CorrectPreferences(content);
    if (!content.Has(kColumns.Key())) {
        CCFDictionary columns;   // without the resource the browser shows its own
        if (!i_options.defaultColumns.empty())
            (void)LogStep(ReadDictionary(i_options.defaultColumns, columns), "reading default columns",
                          i_options.defaultColumns);
        if (!columns.Empty()) content.Set(kColumns.Key(), std::move(columns));
    }
    Log("getting music folder default");
    StoreFolder(content, kMusicFolder.Key(), i_options.musicFolder);
    Log("getting cache folder default");
    StoreFolder(content, kCacheFolder.Key(), i_options.cacheFolder);
    return content;
}

void CPreferences::StoreFolder(CCFDictionary& content, std::string_view key,
                               const std::filesystem::path& folder) const {
    const auto path = PathOf(content.GetDictionary(key));
    std::error_code problem;
    if (!path.empty() && std::filesystem::is_directory(path, problem)) return;
    if (content.Has(key)) {
        // Music may lie on a volume that is plugged in later: its place is kept. A cache is made anew.
        if (key == kMusicFolder.Key()) {
            Log("Error getting music folder from pref");
            return;
        }
        Log("Cache folder not found, resetting to default location.");
    }
    if (folder.empty()) return;
    content.Set(key, CCFDictionary{{"type", kFileRef_Path}, {"path", SuperString(folder.string())}});
}

/** A file that we could not read is somebody's work of years: it is renamed, never written over. */
OSErr CPreferences::MoveAside() {
    namespace fs = std::filesystem;
    std::error_code problem;
    const fs::file_status status = fs::symlink_status(i_files.file, problem);
    if (!fs::exists(status)) {
        i_keepAsideB = false;   // somebody moved it
        return noErr;
    }
    if (fs::is_directory(i_files.file, problem)) return LogStep(paramErr, "prefs file is a folder", i_files.file);
    for (int n = 1; n < 1000; ++n) {
        const std::string mark = n == 1 ? " (broken)" : " (broken " + std::to_string(n) + ")";
        const fs::path aside =
            i_files.file.parent_path() / (i_files.file.stem().string() + mark + i_files.file.extension().string());
        if (fs::exists(fs::symlink_status(aside, problem))) continue;
        fs::rename(i_files.file, aside, problem);
        if (problem) return LogStep(permErr, "keeping broken prefs file", i_files.file);
        LogF("Broken prefs file is kept as <%s>", aside.c_str());
        i_keepAsideB = false;
        return noErr;
    }
    return LogStep(dupFNErr, "keeping broken prefs file", i_files.file);
}

OSErr CPreferences::Save() {
    const std::optional<CCFDictionary> content = Gather();
    return content ? Write(*content) : noErr;
}

std::optional<CCFDictionary> CPreferences::Gather() {
    if (i_options.windows)
        for (const WindowRecord& window : i_options.windows()) {
            (void)Store(RectangleKey(window.name), CCFDictionary{{"top", window.topS},
                                                                 {"left", window.leftS},
                                                                 {"bottom", window.bottomS},
                                                                 {"right", window.rightS}});
            (void)Store(VisibleKey(window.name), window.visibleB);
        }
    if (i_options.atSave)
        for (const auto& [key, value] : i_options.atSave()) (void)Store(key, value);
    for (const PrefRow& row : PreferenceTable())
        if (row.rule == PrefRule::kAtSave && !GetByName(row.key)) (void)Store(row.key, row.Default({}));
    (void)Store("Prefs file version (do not change!)", 2);
    CCFDictionary content = Snapshot();
    if (i_written.With([&](const auto& written) { return written == content; })) return std::nullopt;
    return content;
}

OSErr CPreferences::Write(const CCFDictionary& content) {
    const std::scoped_lock guard(i_saveLock);
    Log("Starting: Saving Preferences");
    const auto write = [&]() -> OSErr {
        if (i_keepAsideB)
            if (const OSErr err = MoveAside(); Failed(err)) return err;
        std::string text;
        if (const OSErr err = LogStep(WritePropertyList(content, text), "creating xml data"); Failed(err)) return err;
        return i_options.replace(i_files.file, std::as_bytes(std::span(text)));
    };
    const OSErr err = write();
    if (!Failed(err)) i_written.Set(content);
    Log(Failed(err) ? "!!Failed!! Saving Preferences" : "Done: Saving Preferences");
    return err;
}

std::optional<WindowRecord> CPreferences::Window(const std::string& name) const {
    const std::optional<CCFValue> stored = GetByName(RectangleKey(name));
    const CCFDictionary* const rectangleP = stored ? stored->Dictionary() : nullptr;
    if (rectangleP == nullptr) return std::nullopt;
    std::array<short, 4> sidesS{};
    constexpr std::array<std::string_view, 4> kSides = {"top", "left", "bottom", "right"};
    for (std::size_t n = 0; n < kSides.size(); ++n) {
        const std::int64_t sideL = rectangleP->GetInteger(kSides[n]);
        if (sideL < -32768 || sideL > 32767) return std::nullopt;
        sidesS[n] = static_cast<short>(sideL);
    }
    if (sidesS[2] <= sidesS[0] || sidesS[3] <= sidesS[1]) return std::nullopt;   // no window could be found in it
    return WindowRecord{name,      sidesS[0], sidesS[1],
                        sidesS[2], sidesS[3], GetByName(VisibleKey(name)).value_or(false).Bool().value_or(false)};
}

std::filesystem::path CPreferences::MusicFolder() const {
    const auto path = PathOf(GetDictionary(kMusicFolder));
    return path.empty() ? i_options.musicFolder : path;
}
std::filesystem::path CPreferences::CacheFolder() const {
    const auto path = PathOf(GetDictionary(kCacheFolder));
    return path.empty() ? i_options.cacheFolder : path;
}

void CPreferences::OnStored(std::string_view key, const CCFValue& value) {
    for (const SwitchRow& row : kLogSwitches)
        if (row.pref.Key() == key) CLog::Get().SetSwitch(row.which, value.Bool().value_or(false));
}

void CPreferences::OnChanged(std::string_view key) {
    if (i_options.onDirty) i_options.onDirty();
    const bool firstB = i_changed.With([&](PrefKeys& changed) { return changed.emplace(key), changed.size() == 1; });
    // Later: whoever set it may be any thread, and be in the middle of more. Without an application nobody follows.
    const auto tell = [](CPreferences& prefs) { prefs.TellFollowers(); };
    if (firstB && !PostToMain("preferences", i_self.Handle(), tell)) i_changed.Set({});
}

std::unique_ptr<CPrefFollower> CPreferences::Follow(std::function<void()> work) {
    auto followerP = std::make_unique<CPrefFollower>(std::move(work));
    followerP->i_prefs = i_self.Handle();
    i_followers.Add(*followerP);
    Run(*followerP);
    return followerP;
}

CPrefFollower::~CPrefFollower() {
    if (CPreferences* const prefsP = i_prefs.Get(); prefsP != nullptr) prefsP->i_followers.Remove(*this);
}

void CPreferences::Run(const CPrefFollower& follower) {
    const auto state = follower.i_state;
    state->keys.clear();
    const Reading reading(state->keys);
    state->work();
}

void CPreferences::TellFollowers() {
    const PrefKeys changed = i_changed.Exchange({});
    i_followers.Tell([&](CPrefFollower& follower) {
        if (std::ranges::any_of(changed, [&](const std::string& key) { return follower.i_state->keys.contains(key); }))
            try {
                Run(follower);
            } catch (const std::exception& fault) {   // the others are told all the same
                LogF("### Error following the preferences: %s", fault.what());
            }
    });
}
