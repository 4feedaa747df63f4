#include "Meta/CMeta_File.h"

namespace {
constexpr MetaKey kTags_Read[] = {"name"_key, "arts"_key, "albm"_key, "genr"_key,
                                  "cmmt"_key, "trak"_key, "cprt"_key, "cryr"_key};
constexpr MetaKey kTags_Written[] = {"name"_key, "arts"_key, "albm"_key, "genr"_key, "cmmt"_key,
                                     "trak"_key, "cryr"_key, "cprt"_key, "soft"_key};
}   // namespace

CMeta_File::CMeta_File(CFileRef file) : i_file(std::move(file)) {}
CMeta_File::~CMeta_File() { Retire(); }

OSErr CMeta_File::OpenFile(bool readOnlyB) {
    i_stream.reset(std::fopen(i_file.GetPath().c_str(), readOnlyB ? "rb" : "rb+"));
    return i_stream != nullptr ? noErr : fnfErr;
}

void CMeta_File::CloseFile() { i_stream.reset(); }

OSErr CMeta_File::ReadTags() {
    OSErr err = noErr;
    for (const MetaKey key : kTags_Read)
        if (err = ReadTag(key); Failed(err)) break;
    SetDirty(false);
    return err;
}

OSErr CMeta_File::WriteTags() {
    if (!IsDirty()) return noErr;
    OSErr err = OpenFile(false);
    if (Failed(err)) return err;
    for (const MetaKey key : kTags_Written)
        if (err = WriteTag(key); Failed(err)) break;
    CloseFile();
    if (!Failed(err)) SetDirty(false);   // what was not written is still to be written
    return err;
}
