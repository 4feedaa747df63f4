#pragma once
#include "Library/CSongDatabase.h"
#include "Meta/CMetaManager.h"

/** The database loads for as long as this lives: nothing becomes dirty or is queued, texts stay as the files have them.
    Main thread; one may lie inside another. */
class CLoadingScope {
public:
    explicit CLoadingScope(CSongDatabase& database)
        : i_database(database), i_databaseB(database.IsLoading()), i_metaB(MetaManager().IsLoading()) {
        i_database.SetLoading(true);
        MetaManager().SetLoading(true);
    }
    ~CLoadingScope() {
        i_database.SetLoading(i_databaseB);
        MetaManager().SetLoading(i_metaB);
    }
    CLoadingScope(const CLoadingScope&) = delete;
    CLoadingScope& operator=(const CLoadingScope&) = delete;

private:
    CSongDatabase& i_database;
    const bool i_databaseB, i_metaB;
};
