#pragma once
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <utility>

#include "Platform/CFileCalls.h"

/** For tests: hands every call on, but fails, or stops the machine, at a chosen one.
    A cut of the power takes what was written and not synced: such files lose half of their bytes. After it no call
    has an effect and each answers EIO, so that whatever clean-up code runs finds the disc as it was at that moment.
    Threads  any, for the calls; the watch is called on theirs, under no lock. Which call has which number is certain
             only while one thread calls. No thread is in a call any more when this is destroyed.
    Owner    the test; `below` outlives it. */
class CFileCalls_Faults final : public CFileCalls {
public:
    explicit CFileCalls_Faults(CFileCalls& below) : i_below(below) {}
    ~CFileCalls_Faults() override;
    CFileCalls_Faults(const CFileCalls_Faults&) = delete;
    CFileCalls_Faults& operator=(const CFileCalls_Faults&) = delete;

    /** The call number `n`, from 0, answers `errnoL` and does nothing (a write does half of its work first). */
    void FailAt(long n, int errnoL);
    /** Every call from `n` on does. */
    void FailFrom(long n, int errnoL);
    /** The power goes before call `n`; with `halfB` a write at `n` still does half of its work. */
    void CutAt(long n, bool halfB = false);
    /** The process ends with `code` before call `n`; for a forked child. */
    void ExitAt(long n, int code);
    /** From now on the disc holds so many bytes more; then ENOSPC. */
    void SetSpace(std::uint64_t bytes);
    /** Called before each call with its name and path, that of the open file where the call has only a handle. */
    using Watch = std::function<void(long n, const char* callZ, const Path& path)>;
    void SetWatch(Watch watch) { i_watch = std::move(watch); }

    [[nodiscard]] long Count() const { return Locked(i_countL); }
    [[nodiscard]] bool IsCut() const { return Locked(i_cutB); }
    /** Files written, and folders with changed names, since their last Sync. */
    [[nodiscard]] std::size_t UnsyncedFiles() const { return Locked(i_dirty).size(); }
    [[nodiscard]] bool IsUnsynced(const Path& folder) const { return Locked(i_dirtyFolders).contains(folder); }

    [[nodiscard]] int Open(const Path& path, FileAccess access, std::uint32_t mode, int& handle) override;
    int Close(int handle) override;
    [[nodiscard]] int ReadAt(int handle, std::uint64_t at, std::span<std::byte> to, std::size_t& got) override;
    [[nodiscard]] int WriteAt(int handle, std::uint64_t at, std::span<const std::byte> from,
                              std::size_t& written) override;
    [[nodiscard]] int Truncate(int handle, std::uint64_t bytes) override;
    [[nodiscard]] int Sync(int handle) override;
    [[nodiscard]] int SetMode(int handle, std::uint32_t mode) override;
    [[nodiscard]] int SetModified(int handle, std::int64_t nanoseconds) override;
    [[nodiscard]] int Lock(int handle) override;
    [[nodiscard]] int Look(int handle, FileInfo& info) override;
    [[nodiscard]] int Look(const Path& path, bool followB, FileInfo& info) override;
    [[nodiscard]] int Rename(const Path& from, const Path& to) override;
    [[nodiscard]] int RenameNew(const Path& from, const Path& to) override;
    [[nodiscard]] int Exchange(const Path& one, const Path& other) override;
    [[nodiscard]] int Unlink(const Path& path) override;
    [[nodiscard]] int MakeFolder(const Path& path, std::uint32_t mode) override;
    [[nodiscard]] int RemoveFolder(const Path& path) override;
    [[nodiscard]] int List(const Path& folder, std::vector<std::string>& names) override;
    [[nodiscard]] int HardLink(const Path& existing, const Path& added) override;
    [[nodiscard]] int ReadLink(const Path& path, Path& target) override;
    [[nodiscard]] int MakeLink(const Path& target, const Path& path) override;
    [[nodiscard]] int RealPath(const Path& path, Path& real) override;
    [[nodiscard]] int MayWrite(const Path& path) override;
    [[nodiscard]] int SpaceLeft(const Path& path, std::uint64_t& bytes) override;

private:
    enum class Plan : unsigned char { kNone, kFail, kCut, kExit };
    struct OpenFile {
        Path path;
        bool folderB = false;
    };
    using FileID = std::pair<std::uint64_t, std::uint64_t>;

    /** What call number i_countL shall answer without being made; 0: make it. */
    [[nodiscard]] int Before(const char* callZ, const Path& path = {});
    /** Empty for one that was not opened here. */
    [[nodiscard]] OpenFile FileOf(int handle) const;
    [[nodiscard]] Path PathOf(int handle) const { return FileOf(handle).path; }
    void CutPower();
    void MarkDirty(int handle);
    void MarkFolder(const Path& changed);
    template <class T>
    [[nodiscard]] T Locked(const T& value) const {
        const Guard guard(i_lock);
        return value;
    }

    using Guard = std::scoped_lock<std::recursive_mutex>;

    CFileCalls& i_below;
    mutable std::recursive_mutex i_lock;   // over all below but the watch, which is set before the calls begin
    Plan i_plan = Plan::kNone;
    long i_atL = 0;
    int i_errnoL = 0;
    bool i_onwardsB = false, i_halfB = false, i_cutB = false;
    long i_countL = 0;
    std::optional<std::uint64_t> i_spaceL;
    Watch i_watch;
    std::map<FileID, int> i_dirty;   // a handle of each file, owned here
    std::map<int, OpenFile> i_open;
    std::set<Path> i_dirtyFolders;
};
