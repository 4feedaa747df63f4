// The places of a song's files.
#include "Core/Assertions.h"
#include "Library/CSong.h"
#include "Library/CSongDatabase.h"
#include "Library/FileSystemName.h"

namespace {

bool IsMain(SDB_SongFile type) {
    return type == SDB_SongFile_AUDIO || type == SDB_SongFile_VIDEO || type == SDB_SongFile_ZIP;
}

}   // namespace

SDB_SongFileStatus CSong::GetStatus(SDB_SongFile type) const { return i_meta.Stored(SongFileKey(type)).FileStatus(); }

CFileRef CSong::FileRef(SDB_SongFile type) const { return i_meta.Stored(SongFileKey(type)).SongFile().ref; }

SDB_SongFile CSong::MainFile() const {
    for (const SDB_SongFile type : {SDB_SongFile_ZIP, SDB_SongFile_VIDEO, SDB_SongFile_AUDIO})
        if (GetStatus(type) != SDB_SongFileStatus_NONE) return type;
    return SDB_SongFile_NONE;
}

void CSong::SetFileRef(SDB_SongFile type, SDB_SongFileStatus status, const CFileRef& ref) {
    const MetaKey key = SongFileKey(type);
    if (!Assert(key != CM_Key_NONE)) return;
    const bool changedB =
        status == SDB_SongFileStatus_NONE ? i_meta.RemoveValue(key) : i_meta.SetSongFile(key, {status, ref});
    CSongDatabase* const databaseP = i_meta.Database();
    if (changedB && status == SDB_SongFileStatus_CACHE && databaseP != nullptr && !databaseP->IsInBatch())
        databaseP->Host().SongCached();
    if (!changedB || !IsMain(type) || databaseP == nullptr || databaseP->IsInBatch()) return;
    const bool behindZipB = type != SDB_SongFile_ZIP && GetStatus(SDB_SongFile_ZIP) != SDB_SongFileStatus_NONE;
    if (!behindZipB) databaseP->SetDirty(true, "file status changed on <<" + Name().UTF8() + ">>");
}

OSErr CSong::GetFile(SDB_SongFile type, CFileRef& file, CSongFiles::TryCached tryCached) {
    const CSongDatabase* const databaseP = i_meta.Database();
    CSongFiles files(*this, databaseP == nullptr ? std::make_shared<const LibrarySettings>() : databaseP->Settings());
    const OSErr err = files.GetFile(type, file, tryCached);
    files.Store(*this);
    return err;
}

void CSong::SetMissing(bool missingB) {
    const bool wasDirtyB = i_meta.IsDirty();
    const CMeta::QuietChanges quiet(i_meta);
    if (missingB)
        i_meta.SetBool("Msng"_key, true);
    else
        i_meta.RemoveValue("Msng"_key);
    i_meta.SetDirty(wasDirtyB);
    if (i_meta.Database() != nullptr) i_meta.Database()->NoteMissing(i_id, missingB);
}

SuperString CSong::GetSongName(SongNameFormat format, SongNameUse use) const {
    const auto fit = [use](const SuperString& text) {
        return use == SongNameUse::kFile ? SuperString(FileSystemName(text)) : text;
    };
    const auto byTemplate = [&](std::string_view nameTemplate) {
        const auto built = ConformedName(i_meta, nameTemplate, use);
        return built ? SuperString(built->text) : fit(Name());
    };
    const CSongDatabase* const databaseP = i_meta.Database();
    switch (format) {
        case SongNameFormat::kTrackGraphics:
            return fit(std::to_string(i_meta.Stored("trak"_key).Integer()) + " " + Name().UTF8() + ".cdg");
        case SongNameFormat::kConformed:
            return byTemplate(databaseP == nullptr ? LibrarySettings().nameTemplate
                                                   : databaseP->Settings()->nameTemplate);
        case SongNameFormat::kDefaultTemplate:
            return byTemplate(LibrarySettings().nameTemplate);
        case SongNameFormat::kOnDisc:
            return MainFile() == SDB_SongFile_NONE ? SuperString() : SuperString(FileRef(MainFile()).GetName());
        default:
            return fit(Name());
    }
}

OSErr CSong::SetFile(SDB_SongFile type, const CFileRef& ref, StatusCheck check) {
    const CSongDatabase* const databaseP = i_meta.Database();
    const CSongStatus rules = databaseP == nullptr ? CSongStatus({}, {}) : databaseP->Settings()->Status();
    const SDB_SongFileStatus status = rules.Of(type, ref.IsEmpty() ? CFileRef::Path() : ref.GetPath());
    if (check == StatusCheck::kCheck && GetStatus(type) == SDB_SongFileStatus_CD && status != SDB_SongFileStatus_CD) {
        const bool emptyB = status == SDB_SongFileStatus_NONE;
        (void)(emptyB ? AssertWords(false, "CF_ASSERT Fail: Setting CD file status to empty!")
                      : AssertWords(false, "CF_ASSERT Fail: Trying to tell a CD that it's not a CD"));
        return paramErr;
    }
    SetFileRef(type, status, ref);
    return noErr;
}
