#include "Audio/CAS_Zip.h"

#include <algorithm>
#include <utility>

#include "Zip/CZipSongMembers.h"

namespace {

SpoolTraits ZipTraits(const CZipMember& member, CCFDictionary source) {
    SpoolTraits traits;
    traits.name = "Zip: " + member.name;
    traits.unitBytes = ZipSongKindsOf(member.name).graphicsB ? kSpool_GraphicsUnitBytes : 1;
    traits.lock = SpoolLock::kRead;
    traits.ownPositionB = true;
    traits.source = std::move(source);
    return traits;
}

}   // namespace

CAS_Zip::CAS_Zip(CFileRef zip, CZipMember member, CCFDictionary source)
    : CSpooler(ZipTraits(member, std::move(source))), i_zip(std::move(zip)), i_member(std::move(member)) {}

OSErr CAS_Zip::GetEOF(std::uint64_t& sizeL) {
    sizeL = i_member.sizeL / UnitBytes();
    return noErr;
}

OSErr CAS_Zip::Open_i(bool writeB, std::uint64_t& sizeL) {
    if (writeB) return opWrErr;
    sizeL = i_member.sizeL / UnitBytes();
    const auto bytesP = std::make_shared<CByteSource_Zip>();
    i_bytesP.Set(bytesP);   // from now on an abort reaches it
    if (const OSErr err = Err(); Failed(err)) return err;
    return bytesP->Open(i_zip, i_member);
}

OSErr CAS_Zip::Close_i(bool writeB) {
    if (!writeB) i_bytesP.Set(nullptr);
    return noErr;
}

void CAS_Zip::Abort_i() {
    if (const auto bytesP = i_bytesP.Get()) bytesP->Abort();
}

std::uint64_t CAS_Zip::Available_i() {
    const auto bytesP = i_bytesP.Get();
    return bytesP ? bytesP->Size() / UnitBytes() - bytesP->Position() / UnitBytes() : 0;
}

OSErr CAS_Zip::Read_i(std::span<std::byte> buffer, std::size_t& gotL) {
    gotL = 0;
    const auto bytesP = i_bytesP.Get();
    if (!bytesP) return fnOpnErr;
    const OSErr err = bytesP->Read(buffer, gotL);
    const std::size_t oddL = gotL % UnitBytes();
    gotL -= oddL;
    // What came before a fault is given first; the next read meets the fault again, with nothing before it.
    if (Failed(err) && gotL > 0) return oddL == 0 ? noErr : bytesP->Seek(bytesP->Position() - oddL);
    return err;
}

OSErr CAS_Zip::Seek_i(std::uint64_t positionL) {
    const auto bytesP = i_bytesP.Get();
    if (!bytesP) return fnOpnErr;
    positionL = std::min(positionL, bytesP->Size() / UnitBytes());
    SetRead(positionL);
    return bytesP->Seek(positionL * UnitBytes());
}
