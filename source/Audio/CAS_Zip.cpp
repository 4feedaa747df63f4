#include "Audio/CAS_Zip.h"

#include <algorithm>
#include <utility>

#include "Core/CZipSongMembers.h"

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
    i_bytes = std::make_unique<CByteSource_Zip>();
    sizeL = i_member.sizeL / UnitBytes();
    return i_bytes->Open(i_zip, i_member);
}

OSErr CAS_Zip::Close_i(bool writeB) {
    if (!writeB) i_bytes.reset();
    return noErr;
}

std::uint64_t CAS_Zip::Available_i() {
    return i_bytes ? i_bytes->Size() / UnitBytes() - i_bytes->Position() / UnitBytes() : 0;
}

OSErr CAS_Zip::Read_i(std::span<std::byte> buffer, std::size_t& gotL) {
    gotL = 0;
    if (!i_bytes) return fnOpnErr;
    const OSErr err = i_bytes->Read(buffer, gotL);
    const std::size_t oddL = gotL % UnitBytes();
    gotL -= oddL;
    // What came before a fault is given first; the next read meets the fault again, with nothing before it.
    if (Failed(err) && gotL > 0) return oddL == 0 ? noErr : i_bytes->Seek(i_bytes->Position() - oddL);
    return err;
}

OSErr CAS_Zip::Seek_i(std::uint64_t positionL) {
    if (!i_bytes) return fnOpnErr;
    positionL = std::min(positionL, i_bytes->Size() / UnitBytes());
    SetRead(positionL);
    return i_bytes->Seek(positionL * UnitBytes());
}
