#pragma once
#include "App/CSaveTarget.h"
#include "Library/CSongDatabase.h"

class CApp;

/** The library as the application has it: owns the database, answers what it asks of those above it, and is what the
    save timer and the quit save.
    Threads  main.
    Owner    CApp. */
class CAppLibrary final : public CSongDatabaseHost, public CSaveTarget {
public:
    explicit CAppLibrary(CApp& app);
    ~CAppLibrary() override;

    [[nodiscard]] CSongDatabase& Database() noexcept { return i_database; }

    // What the database asks.
    [[nodiscard]] bool IsReady() const override;
    void DirtyChanged(bool dirtyB) override;
    void StopPlayback() override;
    [[nodiscard]] bool IsDateAddedReal() const override;
    void AskLater(const Question& question, std::function<void(const Answer&)> answered) override;
    void StopWarning(std::string_view preference) override;

    // What the save timer and the quit ask.
    [[nodiscard]] bool IsDirty() const override { return i_database.IsDirty() || i_othersDirtyB; }
    [[nodiscard]] bool IsAddingToLibrary() const override { return i_database.IsAddingToLibrary(); }
    void SetDirty(bool dirtyB) override { i_othersDirtyB = dirtyB; }
    OSErr Save(bool fullB) override;

private:
    CApp& i_app;
    CSongDatabase i_database;
    bool i_othersDirtyB = false;   // what is saved beside the library: the preferences
};
