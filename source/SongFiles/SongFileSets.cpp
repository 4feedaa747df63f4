#include "SongFiles/SongFileSets.h"

#include <algorithm>
#include <map>
#include <set>

#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Core/SmallExtension.h"
#include "Core/SuperString.h"
#include "Files/FSError.h"
#include "Files/FSrObjects.h"
#include "Library/CSongFileSearch.h"
#include "Library/SongFileTypes.h"
#include "Zip/CZipArchive.h"
#include "Zip/CZipSongMembers.h"

namespace {

using Path = std::filesystem::path;
constexpr int kFolders_Deep = 64;   // links may run in circles

bool HoldsSong(const CZipArchive& archive) {
    const CZipSongMembers song = CZipSongMembers::Choose(archive.Members());
    return song.audio || song.graphics || song.video;
}

/** The files of one folder that share a base name, by what they are to a song. */
struct Group {
    std::vector<Path> audio, graphics, videos, zips;
};

/** The most wished for: by the order in which a missing file of the kind is looked for. */
void SortByWish(std::vector<Path>& files, SDB_SongFile type) {
    const auto wish = SongFileSearchExtensions(type);
    std::ranges::stable_sort(files, {}, [&](const Path& file) {
        return std::ranges::find(wish, "." + SmallExtension(file)) - wish.begin();
    });
}

class Gatherer {
public:
    Gatherer(SongFileSets& result, const SongFileRules& rules, const std::function<bool()>& cancelled)
        : i_result(result), i_rules(rules), i_cancelled(cancelled) {}

    void TakeChosen(const Path& path) {
        FileInfo info;
        if (const int errL = CFileCalls::Get().Look(path, true, info); errL != 0) return Refuse(path, MapErrno(errL));
        if (info.kind == FileKind::kFolder) return TakeOnce(path, 0);
        i_groups.clear();
        if (info.kind != FileKind::kFile || !AddToGroup(path))
            return Refuse(path, paramErr, IsMidiFile(path) ? RefusedFile::Why::kMidi : RefusedFile::Why::kNoSong);
        MakeSets();
    }

private:
    void Refuse(const Path& path, OSErr err, RefusedFile::Why why = RefusedFile::Why::kErr) {
        i_result.refused.push_back({path, err, why});
        LogF("### Error not added: %s (%s)", path.c_str(), i_result.refused.back().Reason().c_str());
    }

    void TakeFolder(const Path& folder, int deepL) {
        std::vector<std::string> names;
        if (const OSErr err = FSrList(CFileRef(folder), names); Failed(err)) return Refuse(folder, err);
        std::vector<Path> folders;
        i_groups.clear();
        for (const std::string& name : names) {
            if (i_cancelled()) return;
            if (name.starts_with('.')) continue;
            FileInfo info;
            if (CFileCalls::Get().Look(folder / name, true, info) != 0) continue;   // a dangling link
            if (info.kind == FileKind::kFolder) folders.push_back(folder / name);
            if (info.kind == FileKind::kFile) (void)AddToGroup(folder / name);
        }
        MakeSets();
        if (deepL == kFolders_Deep) return;
        for (const Path& inner : folders) {
            if (i_cancelled()) return;
            TakeOnce(inner, deepL + 1);
        }
    }

    /** A link back to a folder that was walked already would bring everything again. */
    void TakeOnce(const Path& folder, int deepL) {
        Path real;
        if (const int errL = CFileCalls::Get().RealPath(folder, real); errL != 0) return Refuse(folder, MapErrno(errL));
        if (i_walked.insert(real).second) TakeFolder(folder, deepL);
    }

    /** False when it is no part of a song. */
    bool AddToGroup(const Path& file) {
        Group& group = i_groups[SuperString(file.stem().string()).Lowercased().UTF8()];
        const ZipSongKinds kinds = ZipSongKindsOf(file.filename().string());
        if (SmallExtension(file) == "zip")
            group.zips.push_back(file);
        else if (kinds.graphicsB)
            group.graphics.push_back(file);
        else if (kinds.videoB)
            group.videos.push_back(file);   // some can be the sound of a pair: MakePair
        else if (kinds.audioB || (i_rules.midiB && IsMidiFile(file)))
            group.audio.push_back(file);
        else
            return false;
        return true;
    }

    void MakeSets() {
        for (auto& [name, group] : i_groups) {
            if (i_cancelled()) return;
            for (const Path& zip : group.zips) MakeZip(zip);
            if (!group.graphics.empty()) {
                MakePair(group);
                continue;
            }
            for (const Path& video : group.videos) Add({.audio = {}, .video = CFileRef(video), .zip = {}, .base = {}});
            for (const Path& audio : group.audio) MakeAudio(audio);
        }
        i_groups.clear();
    }

    void MakeZip(const Path& zip) {
        CZipArchive archive;
        if (const OSErr err = archive.Open(CFileRef(zip)); Failed(err)) return Refuse(zip, err);
        if (!HoldsSong(archive)) return Refuse(zip, paramErr, RefusedFile::Why::kNoSong);
        Add({.audio = {}, .video = {}, .zip = CFileRef(zip), .base = {}});
    }

    void MakePair(Group& group) {
        for (const Path& video : group.videos)
            if (ZipSongKindsOf(video.filename().string()).audioB)
                group.audio.push_back(video);
            else
                Add({.audio = {}, .video = CFileRef(video), .zip = {}, .base = {}});
        SortByWish(group.graphics, SDB_SongFile_VIDEO);
        SortByWish(group.audio, SDB_SongFile_AUDIO);
        SongFileSet set;
        set.video = CFileRef(group.graphics.front());
        if (!group.audio.empty())
            set.audio = CFileRef(group.audio.front());
        else if (Failed(CSongFileSearch(set.video.GetName()).Find(set.video, SDB_SongFile_AUDIO, {}, set.audio)) &&
                 i_rules.requireAudioB)
            return Refuse(set.video.GetPath(), fnfErr, RefusedFile::Why::kNoSound);
        Add(std::move(set));
    }

    void MakeAudio(const Path& audio) {
        SongFileSet set;
        set.audio = CFileRef(audio);
        if (Failed(CSongFileSearch(set.audio.GetName()).Find(set.audio, SDB_SongFile_VIDEO, {}, set.video)))
            set.video = CFileRef();   // sound without graphics is a song too
        Add(std::move(set));
    }

    void Add(SongFileSet set) {
        const CFileRef& named = !set.zip.IsEmpty() ? set.zip : !set.audio.IsEmpty() ? set.audio : set.video;
        set.base = named.GetPath().stem().string();
        set.facts = SongFileFacts::Of({&set.audio, &set.zip, &set.video});
        if (i_there.insert({set.audio.GetPath(), set.video.GetPath(), set.zip.GetPath()}).second)
            i_result.sets.push_back(std::move(set));
    }

    SongFileSets& i_result;
    const SongFileRules i_rules;
    const std::function<bool()>& i_cancelled;
    std::map<std::string, Group> i_groups;   // of the folder at hand, by base name in small letters
    std::set<Path> i_walked;
    std::set<std::array<Path, 3>> i_there;
};

}   // namespace

std::string RefusedFile::Reason() const {
    switch (why) {
        case Why::kNoSong:
            return Localize("There is no song in it.");
        case Why::kNoSound:
            return Localize("Its sound was not found. Put the sound file of the same name beside it.");
        case Why::kMidi:
            return Localize("MIDI files are songs only with the preference “Launch Midi Files”.");
        case Why::kErr:
            break;
    }
    return FaultWords(err, path);
}

SongFileSets SongFileSets::Gather(std::span<const Path> paths, const SongFileRules& rules,
                                  const std::function<bool()>& cancelled) {
    SongFileSets result;
    Gatherer gatherer(result, rules, cancelled);
    for (const Path& path : paths) {
        if (cancelled()) break;
        gatherer.TakeChosen(std::filesystem::absolute(path).lexically_normal());
    }
    return result;
}
