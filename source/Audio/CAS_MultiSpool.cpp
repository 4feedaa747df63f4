#include "Audio/CAS_MultiSpool.h"

#include <algorithm>
#include <numeric>

namespace {
SpoolTraits MultiTraits(std::size_t unitBytes, std::string name) {
    SpoolTraits traits;
    traits.name = std::move(name);
    traits.type = SpoolType::kMultiple;
    traits.unitBytes = unitBytes;
    traits.ownPositionB = true;
    return traits;
}
}   // namespace

CAS_MultiSpool::CAS_MultiSpool(std::vector<Ref<CSpooler>> parts, std::size_t unitBytes, std::string name)
    : CSpooler(MultiTraits(unitBytes, std::move(name))), i_parts(std::move(parts)) {}

OSErr CAS_MultiSpool::GetEOF(std::uint64_t& sizeL) {
    sizeL = 0;
    for (const Ref<CSpooler>& partP : i_parts) {
        std::uint64_t partL = 0;
        if (const OSErr err = partP->GetEOF(partL); Failed(err)) return err;
        if (partL == 0) {   // one unknown length makes the whole unknown
            sizeL = 0;
            return noErr;
        }
        sizeL += partL;
    }
    return noErr;
}

OSErr CAS_MultiSpool::Open_i(bool writeB, std::uint64_t& sizeL) {
    if (writeB) return paramErr;
    i_sizes.clear();
    i_currentL = 0;
    for (const Ref<CSpooler>& partP : i_parts) {
        std::uint64_t partL = 0;
        if (partP->UnitBytes() != UnitBytes()) return paramErr;
        if (const OSErr err = partP->Open(false, partL); Failed(err)) {
            if (Failed(CloseParts())) return err;   // the first failure is the one that tells
            return err;
        }
        i_sizes.push_back(partL);
    }
    sizeL = std::accumulate(i_sizes.begin(), i_sizes.end(), std::uint64_t{0});
    return noErr;
}

OSErr CAS_MultiSpool::Close_i(bool) { return CloseParts(); }

OSErr CAS_MultiSpool::CloseParts() {
    OSErr err = noErr;
    for (const Ref<CSpooler>& partP : i_parts) err = FirstOf(err, partP->Close(false));   // one not open is fine
    return err;
}

OSErr CAS_MultiSpool::Read_i(std::span<std::byte> buffer, std::size_t& gotL) {
    gotL = 0;
    while (i_currentL < i_parts.size()) {
        const OSErr err = i_parts[i_currentL]->Read(buffer, gotL);
        if (err != eofErr) return err;   // what the part gave, also when that is nothing yet
        ++i_currentL;
    }
    return eofErr;
}

std::uint64_t CAS_MultiSpool::Available_i() {
    for (std::size_t n = i_currentL; n < i_parts.size(); ++n)
        if (const std::uint64_t unitsL = i_parts[n]->Available(); unitsL > 0) return unitsL;
    return 0;
}

OSErr CAS_MultiSpool::Seek_i(std::uint64_t positionL) {
    std::size_t partL = 0;
    while (partL + 1 < i_sizes.size() && positionL >= i_sizes[partL]) positionL -= i_sizes[partL++];
    if (partL >= i_sizes.size()) return positionL == 0 ? noErr : eofErr;
    const double sizeF = static_cast<double>(i_sizes[partL]);
    if (const OSErr err = i_parts[partL]->Seek(sizeF > 0 ? static_cast<double>(positionL) / sizeF : 0); Failed(err))
        return err;
    for (std::size_t n = partL + 1; n < i_parts.size(); ++n) {   // those behind were read before
        if (i_parts[n]->GetPos() == 0) continue;
        if (const OSErr err = i_parts[n]->Seek(0); Failed(err)) return err;
    }
    // Where the part really went.
    SetRead(std::accumulate(i_sizes.begin(), i_sizes.begin() + static_cast<std::ptrdiff_t>(partL), std::uint64_t{0}) +
            i_parts[partL]->GetPos());
    i_currentL = partL;
    return noErr;
}

void CAS_MultiSpool::Abort_i() {
    for (const Ref<CSpooler>& partP : i_parts) partP->Abort();
}
