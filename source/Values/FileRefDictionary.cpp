#include "Values/FileRefDictionary.h"

OSErr WriteFileRef(CFileRef& file, CCFDictionary& dictionary) {
    FileRefRecord record;
    if (const OSErr err = file.ToRecord(record); Failed(err)) return err;
    if (!record.type.has_value()) return paramErr;
    CCFDictionary made;
    made.Set("type", *record.type);
    if (*record.type == FileRefRecord::kType_ALIAS) made.Set("alias", record.alias);
    if (*record.type == FileRefRecord::kType_PATH) made.Set("path", SuperString(record.path));
    dictionary = std::move(made);
    return noErr;
}

OSErr ReadFileRef(const CCFDictionary& dictionary, CFileRef& file) {
    FileRefRecord record;
    if (const CCFValue* const typeP = dictionary.Find("type"); typeP != nullptr) record.type = typeP->Integer();
    if (const CCFValue* const aliasP = dictionary.Find("alias"); aliasP != nullptr && aliasP->Data() != nullptr)
        record.alias = *aliasP->Data();
    if (const CCFValue* const pathP = dictionary.Find("path"); pathP != nullptr && pathP->String() != nullptr)
        record.path = pathP->String()->UTF8();
    return CFileRef::FromRecord(record, file);
}
