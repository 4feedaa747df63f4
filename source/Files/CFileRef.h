#pragma once
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Files/CFileAlias.h"
#include "Platform/OSErr.h"

/** The dictionary form of a file reference. Keys "type", "alias", "path"; only the value that the type names counts. */
struct FileRefRecord {
    static constexpr long kType_ALIAS = 2, kType_NONE = 3, kType_PATH = 4;
    std::optional<long> type;       // absent: not a reference
    std::vector<std::byte> alias;   // as CFileAlias encodes it
    std::string path;
};

/** The one way to name a file. Up to three parts, each made from another when it is asked for.
    Threads  not shared while it changes.
    Owner    a value; a copy is independent. */
class CFileRef {
public:
    using Path = std::filesystem::path;
    static constexpr unsigned kFill_ALIAS = 2, kFill_PATH = 4;

    CFileRef() = default;
    explicit CFileRef(Path path);
    CFileRef(const CFileRef& parent, std::string_view name);
    virtual ~CFileRef() = default;
    CFileRef(const CFileRef&) = default;
    CFileRef(CFileRef&&) = default;
    CFileRef& operator=(const CFileRef&) = default;
    CFileRef& operator=(CFileRef&&) = default;

    [[nodiscard]] bool IsEmpty() const { return !i_fileRefP && !i_aliasP && !i_pathP; }
    [[nodiscard]] bool HasAlias() const { return i_aliasP.has_value(); }
    [[nodiscard]] bool HasPath() const { return i_pathP.has_value(); }

    /** Looks for the file on the disc, by the path, else by the alias; a moved file gives the reference its new path.
        fnfErr when it is nowhere. */
    OSErr Resolve();
    /** Makes the parts of `mask` (kFill_ALIAS, kFill_PATH) that are missing; resolves first when it must. */
    OSErr Fill(unsigned mask);

    /** The path as last known, without a look at the disc; empty for an empty reference. */
    [[nodiscard]] const Path& GetPath() const;
    [[nodiscard]] std::string GetName() const { return GetPath().filename().string(); }
    [[nodiscard]] CFileRef GetParent() const;
    /** Names another file from now on; all parts are made anew. */
    void SetPath(Path path);
    /** The identity found by Resolve. Asserts that there is one. */
    [[nodiscard]] FileIdentity Identity() const;
    [[nodiscard]] const CFileAlias* Alias() const;

    /** Writes type 4 for a reference of which only the path is known, or that is resolved and had no path; else type 2
        with the alias. paramErr for an empty one, which has no form. */
    OSErr ToRecord(FileRefRecord& record);
    /** Type 3 gives an empty reference; another type, or none, is paramErr and leaves `ref` alone. */
    static OSErr FromRecord(const FileRefRecord& record, CFileRef& ref);

private:
    struct ResolvedFile {
        Path path;
        FileIdentity identity;
    };
    std::optional<ResolvedFile> i_fileRefP;
    std::optional<CFileAlias> i_aliasP;
    std::optional<Path> i_pathP;
    std::uint64_t i_volumeL = 0;
};

/** Rewrites the paths of many references when a folder moved: what lay in `from` lies in `to` now. */
class CFSPathModder {
public:
    CFSPathModder(std::filesystem::path from, std::filesystem::path to)
        : i_from(std::move(from)), i_to(std::move(to)) {}
    virtual ~CFSPathModder() = default;
    /** True when `ref` was changed. */
    virtual bool operator()(CFileRef& ref) const;

private:
    std::filesystem::path i_from, i_to;
};

/** True when `path` is `folder` or lies in it, name by name; no look at the disc. */
[[nodiscard]] bool IsInside(const std::filesystem::path& path, const std::filesystem::path& folder);
