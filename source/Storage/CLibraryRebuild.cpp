#include "Storage/CLibraryRebuild.h"

#include <atomic>
#include <map>
#include <thread>

#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Core/SmallExtension.h"
#include "SongFiles/MakeSongOfFiles.h"
#include "Storage/CLoadingScope.h"
#include "Storage/CScopedClock.h"
#include "Threads/ThreadInfo.h"
#include "Threads/WaitMode.h"

namespace {

bool IsSoundAlone(const SongFileSet& set) { return !set.audio.IsEmpty() && set.video.IsEmpty() && set.zip.IsEmpty(); }
bool IsGraphicsAlone(const SongFileSet& set) {
    return set.audio.IsEmpty() && set.zip.IsEmpty() && SmallExtension(set.video.GetPath()) == "cdg";
}

/** Folder and name without what people write in different ways: capitals, blanks, marks. */
std::string SimpleName(const SongFileSet& set) {
    const CFileRef& file = set.audio.IsEmpty() ? set.video : set.audio;
    std::string simple = file.GetPath().parent_path().string() + '/';
    for (const char c : set.base) {
        if (c >= 'A' && c <= 'Z')
            simple += static_cast<char>(c + 32);
        else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || (static_cast<unsigned char>(c) & 0x80) != 0)
            simple += c;
    }
    return simple;
}

}   // namespace

std::size_t CLibraryRebuild::Run() {
    const CScopedClock clock("Time to Rebuild from scratch");
    i_host.ShowProgress("Rebuilding library");
    std::vector<SongFileSet> sets = Gather();
    JoinHalves(sets);
    if (i_database.Settings()->requireAudioB) std::erase_if(sets, IsGraphicsAlone);
    const CLoadingScope loading(i_database);
    std::vector<SongID> songs;
    for (const SongFileSet& set : sets) {
        i_host.ShowSteps(songs.size(), sets.size());
        if (const CSong* const songP = MakeSongOfFiles(i_database, set, DateAdded::kFile))
            songs.push_back(songP->GetSongID());
    }
    (void)i_database.AddSongsToLibrary(songs);
    LogF("Songs found: %zu", songs.size());
    return songs.size();
}

std::vector<SongFileSet> CLibraryRebuild::Gather() const {
    std::error_code err;
    if (!std::filesystem::is_directory(i_folder, err)) return {};
    SongFileSets found;
    std::atomic<bool> doneB{false};
    const std::jthread reader([&] {
        TagThread(NextThreadIndex(), true);
        found = SongFileSets::Gather(std::span(&i_folder, 1), {.requireAudioB = false}, [] { return false; });
        doneB.store(true, std::memory_order_release);
    });
    while (!doneB.load(std::memory_order_acquire)) WaitOneTurn();
    return std::move(found.sets);
}

void CLibraryRebuild::JoinHalves(std::vector<SongFileSet>& sets) const {
    std::map<std::string, std::size_t> sounds;   // not yet joined
    for (std::size_t n = 0; n < sets.size(); ++n)
        if (IsSoundAlone(sets[n])) sounds.try_emplace(SimpleName(sets[n]), n);
    for (SongFileSet& graphics : sets) {
        if (!IsGraphicsAlone(graphics)) continue;
        const auto it = sounds.find(SimpleName(graphics));
        if (it == sounds.end()) continue;
        SongFileSet& sound = sets[it->second];
        if (!AreSame(sound, graphics, sound.base)) continue;
        sound.video = std::exchange(graphics, {}).video;
        sounds.erase(it);
    }
    std::erase_if(
        sets, [](const SongFileSet& set) { return set.audio.IsEmpty() && set.video.IsEmpty() && set.zip.IsEmpty(); });
}

bool CLibraryRebuild::AreSame(const SongFileSet& first, const SongFileSet& second, std::string& base) const {
    enum Button : std::size_t { kFirst, kSecond, kNotSame };
    Question question;
    question.title = Localize("Are these songs the same?");
    question.text = Localize("If so, please pick which name to use:\n1st:\t%1\n2nd:\t%2", {first.base, second.base});
    question.buttons = {Localize("1st name"), Localize("2nd name"), Localize("Not Same")};
    question.defaultIndex = kNotSame;
    question.safeIndex = kNotSame;
    const std::size_t button = i_host.Ask(question).buttonIndex;
    if (button == kSecond) base = second.base;
    return button == kFirst || button == kSecond;
}
