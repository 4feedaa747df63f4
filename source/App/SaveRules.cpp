#include "App/SaveRules.h"

std::optional<SaveRefusal> RefuseSave(const SaveState& state) {
    const struct {
        bool refusedB;
        SaveRefusal words;
    } kRules[] = {
        {!state.databaseDirtyB, {"gApp->i_db->IsDirty()", "FALSE"}},
        {state.addingToLibraryB && !state.lateB, {"gApp->i_db->IsAddingToLibrary()", "TRUE"}},
        {state.initializingB, {"gApp->IsInitializing()", "TRUE"}},
        {!state.idleGraphicsB && !state.lateB, {"gApp->i_idleGraphicsB", "FALSE"}},
        {state.resizingWindowB && !state.lateB, {"gApp->i_resizing_windB", "TRUE"}},
        {state.shutdownB, {"gApp->IsShutdown()", "TRUE"}},
    };
    for (const auto& rule : kRules)
        if (rule.refusedB) return rule.words;
    return std::nullopt;
}
