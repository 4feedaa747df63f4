#include "SongFiles/SongRename.h"

#include <algorithm>

#include "Core/CLog.h"
#include "Files/FSrObjects.h"
#include "Library/FileSystemName.h"

namespace {

constexpr SDB_SongFile kRenamed[] = {SDB_SongFile_AUDIO, SDB_SongFile_VIDEO, SDB_SongFile_ZIP, SDB_SongFile_META,
                                     SDB_SongFile_PROJECT};
constexpr int kNumbers_Most = 1000;

struct Step {
    SDB_SongFile type;
    CFileRef from;
    std::string newName;
};

std::vector<Step> StepsFor(const CSongFiles& files, const std::string& base, int numberL) {
    const std::string tail = numberL == 1 ? "" : " " + std::to_string(numberL);
    std::vector<Step> steps;
    std::size_t longestL = 0;
    for (const SDB_SongFile type : kRenamed) {
        if (files.Status(type) != SDB_SongFileStatus_MUSIC) continue;
        const std::string extension = files.Ref(type).GetPath().extension().string();
        longestL = std::max(longestL, extension.size());
        steps.push_back({type, files.Ref(type), extension});
    }
    // One cut for all: they keep the same base.
    const std::size_t roomL = kFileName_MaxBytes - std::min(kFileName_MaxBytes, longestL + tail.size());
    for (Step& step : steps) step.newName = std::string(FrontOf(base, roomL)) + tail + step.newName;
    return steps;
}

/** Renames them all, or puts back those that were. */
OSErr Apply(CSongFileKeeper& keeper, SongID song, const std::vector<Step>& steps,
            std::vector<std::pair<SDB_SongFile, CFileRef>>& moved) {
    std::vector<std::pair<const Step*, CFileRef>> done;
    OSErr err = noErr;
    for (const Step& step : steps) {
        CFileRef file = step.from;
        if (file.GetName() == step.newName) continue;
        err = keeper.Rename(file, step.newName, song);
        if (Failed(err)) break;
        done.emplace_back(&step, file);
    }
    for (auto it = done.rbegin(); it != done.rend(); ++it) {
        if (Failed(err) && !Failed(LogStep(FSrRename(it->second, it->first->from.GetName()), "putting a name back",
                                           it->second.GetPath())))
            continue;
        moved.emplace_back(it->first->type, it->second);
    }
    return err;
}

}   // namespace

SongRename SongRename::Run(CSongFileKeeper& keeper, const CSongFiles& files, const std::string& base) {
    SongRename result;
    for (int numberL = 1; numberL < kNumbers_Most; ++numberL) {
        const std::vector<Step> steps = StepsFor(files, base, numberL);
        const bool takenB = std::ranges::any_of(steps, [](const Step& step) {
            const CFileRef wanted(step.from.GetParent(), step.newName);
            bool existsB = false;
            return !Failed(FSrObjectExists(wanted, existsB)) && existsB &&
                   !FSrIsSameFile(step.from, wanted);   // in other capitals on a disc that does not tell them
        });
        if (takenB) continue;
        result.err = Apply(keeper, files.Song(), steps, result.moved);
        // Somebody else made one of the names since we looked: the next number, unless something could not go back.
        if (result.err != dupFNErr || !result.moved.empty()) return result;
    }
    result.err = dupFNErr;
    return result;
}
