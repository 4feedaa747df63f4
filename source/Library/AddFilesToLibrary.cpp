#include "Library/AddFilesToLibrary.h"

#include "Core/WaitMode.h"
#include "Library/CSongDatabase.h"
#include "Library/CT_AddFiles.h"

OSErr AddFilesToLibrary(CSongDatabase& database, std::vector<std::filesystem::path> paths,
                        std::function<void(const AddedFiles&)> done) {
    auto taskP = std::make_unique<CT_AddFiles>(
        database, std::move(paths), [done = std::move(done)](OSErr, const AddedFiles& added) { done(added); });
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

std::vector<SongID> AddFilesToLibrary(CSongDatabase& database, std::span<const std::filesystem::path> paths,
                                      std::vector<RefusedFile>* refusedP) {
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
    if (CT_Preemptive::Start(std::move(taskP)) == 0) return {};
    while (!outcomeRef->doneB) WaitOneTurn();
    if (refusedP != nullptr) *refusedP = outcomeRef->added.refused;
    return outcomeRef->added.songs;
}
