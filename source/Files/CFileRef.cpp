#include "Files/CFileRef.h"

#include "Core/Assertions.h"
#include "Core/UTF8.h"
#include "Files/FSError.h"

namespace {

/** True for what comes back from a property list as it was: UTF-8 without control characters. */
bool IsPListText(std::string_view text) {
    while (!text.empty()) {
        const UTF8Char at = NextUTF8(text);
        if (!at.validB || at.code < 0x20 || at.code == 0xFFFE || at.code == 0xFFFF) return false;
        text.remove_prefix(at.bytesL);
    }
    return true;
}

}   // namespace

CFileRef::CFileRef(Path path) {
    if (!path.empty()) i_pathP = std::move(path);
}

CFileRef::CFileRef(const CFileRef& parent, std::string_view name) : i_pathP(parent.GetPath() / name) {}

void CFileRef::SetPath(Path path) {
    i_fileRefP.reset();
    i_aliasP.reset();
    i_pathP.reset();
    i_volumeL = 0;
    if (!path.empty()) i_pathP = std::move(path);
}

const CFileRef::Path& CFileRef::GetPath() const {
    static const Path s_none;
    if (i_pathP) return *i_pathP;
    if (i_fileRefP) return i_fileRefP->path;
    return i_aliasP ? i_aliasP->GetPath() : s_none;
}

CFileRef CFileRef::GetParent() const {
    const Path parent = GetPath().parent_path();
    return CFileRef(parent.empty() && !GetPath().empty() ? Path(".") : parent);
}

OSErr CFileRef::Resolve() {
    if (IsEmpty()) return errFSMissingName;
    Path path = GetPath();
    FileInfo info;
    int err = CFileCalls::Get().Look(path, true, info);
    if (err != 0 && MapErrno(err) == fnfErr && i_aliasP) {
        if (const OSErr status = i_aliasP->Resolve(path); Failed(status)) return status;
        err = CFileCalls::Get().Look(path, true, info);
    }
    if (err != 0) return MapErrno(err);
    i_fileRefP = ResolvedFile{path, FileIdentity::Of(info)};
    i_volumeL = info.deviceL;
    if (i_pathP) i_pathP = path;
    // The old identity may be that of a file which a save has replaced since.
    if (i_aliasP) i_aliasP.emplace(path, i_fileRefP->identity);
    return noErr;
}

OSErr CFileRef::Fill(unsigned mask) {
    if ((mask & kFill_PATH) != 0 && !i_pathP) {
        if (!i_fileRefP)
            if (const OSErr err = Resolve(); Failed(err)) return err;
        if (!Assert(i_fileRefP)) return paramErr;
        i_pathP = i_fileRefP->path;
    }
    if ((mask & kFill_ALIAS) != 0 && !i_aliasP) {
        if (!i_fileRefP)
            if (const OSErr err = Resolve(); Failed(err)) return err;
        if (!Assert(i_fileRefP)) return paramErr;
        i_aliasP.emplace(i_fileRefP->path, i_fileRefP->identity);
    }
    return noErr;
}

FileIdentity CFileRef::Identity() const { return Assert(i_fileRefP) ? i_fileRefP->identity : FileIdentity{}; }

const CFileAlias* CFileRef::Alias() const { return Assert(i_aliasP) ? &*i_aliasP : nullptr; }

OSErr CFileRef::ToRecord(FileRefRecord& record) {
    if (IsEmpty()) return paramErr;
    FileRefRecord made;
    // A property list holds text alone: a path in another encoding survives only inside an alias.
    const bool textB = IsPListText(GetPath().native());
    if (!textB && Failed(Fill(kFill_ALIAS))) return bdNamErr;
    if (textB && ((i_fileRefP && !i_pathP) || (!i_fileRefP && !i_aliasP))) {
        if (const OSErr err = Fill(kFill_PATH); Failed(err)) return err;
        if (!Assert(i_pathP)) return paramErr;
        made.type = FileRefRecord::kType_PATH;
        made.path = i_pathP->string();
    } else {
        if (const OSErr err = Fill(kFill_ALIAS); Failed(err)) return err;
        if (!Assert(i_aliasP)) return paramErr;
        made.type = FileRefRecord::kType_ALIAS;
        made.alias = i_aliasP->Encode();
    }
    record = std::move(made);
    return noErr;
}

OSErr CFileRef::FromRecord(const FileRefRecord& record, CFileRef& ref) {
    if (!record.type) return paramErr;
    CFileRef made;
    switch (*record.type) {
        case FileRefRecord::kType_NONE:
            break;
        case FileRefRecord::kType_PATH:
            if (record.path.empty() || record.path.find('\0') != std::string::npos) return paramErr;
            made.i_pathP = record.path;
            break;
        case FileRefRecord::kType_ALIAS:
            made.i_aliasP = CFileAlias::Decode(record.alias);
            if (!made.i_aliasP) return paramErr;
            break;
        default:
            return paramErr;
    }
    ref = std::move(made);
    return noErr;
}

bool CFSPathModder::operator()(CFileRef& ref) const {
    if (ref.IsEmpty() || !IsInside(ref.GetPath(), i_from)) return false;
    const std::filesystem::path tail = ref.GetPath().lexically_relative(i_from);
    ref.SetPath(tail == "." ? i_to : i_to / tail);
    return true;
}

bool IsInside(const std::filesystem::path& path, const std::filesystem::path& folder) {
    const auto end = folder.has_filename() || folder.empty() ? folder.end() : std::prev(folder.end());
    if (folder.empty()) return false;
    auto at = path.begin();
    for (auto it = folder.begin(); it != end; ++it, ++at)
        if (at == path.end() || *at != *it) return false;
    return true;
}
