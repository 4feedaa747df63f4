#include "Audio/CAS_Multifile.h"

#include "Audio/CAS_File.h"

namespace {
std::vector<Ref<CSpooler>> MakeParts(std::span<const CFileRef> files, SpoolType type, std::size_t unitBytes) {
    std::vector<Ref<CSpooler>> parts;
    for (const CFileRef& file : files) parts.emplace_back(MakeRef<CAS_File>(file, type, unitBytes));
    return parts;
}
}   // namespace

CAS_Multifile::CAS_Multifile(std::span<const CFileRef> files, SpoolType type, std::size_t unitBytes)
    : CAS_MultiSpool(MakeParts(files, type, unitBytes), unitBytes, CAS_File::NameOf(SpoolType::kMultiple)) {}
