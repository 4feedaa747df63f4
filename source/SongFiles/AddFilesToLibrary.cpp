#include "SongFiles/AddFilesToLibrary.h"

#include "Core/CLog.h"
#include "Library/CSongDatabase.h"
#include "SongFiles/CT_AddFiles.h"
#include "Threads/WaitMode.h"

std::string AddedFiles::RefusedText() const {
    constexpr std::size_t kMostShown = 10;
    std::string text;
    for (std::size_t n = 0; n < std::min(refused.size(), kMostShown); ++n)
        text += refused[n].path.filename().string() + ": " + refused[n].Reason() + "\n";
    if (refused.size() > kMostShown)
        text += "and " + std::to_string(refused.size() - kMostShown) + " more, see the log\n";
    return text;
}

OSErr AddFilesToLibrary(CSongDatabase& database, std::vector<std::filesystem::path> paths,
                        std::function<void(const AddedFiles&)> done, MakeSong make) {
    auto taskP = std::make_unique<CT_AddFiles>(
        database, std::move(paths), [done = std::move(done)](OSErr, const AddedFiles& added) { done(added); });
    taskP->AskFirst(std::move(make));
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

std::vector<SongID> AddFilesToLibrary(CSongDatabase& database, std::span<const std::filesystem::path> paths,
                                      std::vector<RefusedFile>* refusedP, MakeSong make) {
    struct Outcome {
        AddedFiles added;
        bool doneB = false;
    };
    const auto outcomeRef = std::make_shared<Outcome>();
    auto taskP = std::make_unique<CT_AddFiles>(database, std::vector(paths.begin(), paths.end()),
                                               [outcomeRef](OSErr, const AddedFiles& added) {
                                                   outcomeRef->added = added;
                                                   outcomeRef->doneB = true;
                                               });
    taskP->AskFirst(std::move(make));
    if (CT_Preemptive::Start(std::move(taskP)) == 0) return {};
    while (!outcomeRef->doneB) WaitOneTurn();
    if (refusedP != nullptr) *refusedP = outcomeRef->added.refused;
    return outcomeRef->added.songs;
}
