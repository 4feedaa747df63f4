#include "Zip/CByteSource_Zip.h"

#include <zlib.h>

#include <algorithm>
#include <array>

#include "Core/CLog.h"
#include "Files/CByteSource_File.h"
#include "Zip/ZipRecords.h"

namespace {

constexpr std::size_t kBlock = 32 * 1024;              // of the file at a time
constexpr std::size_t kStep = 32 * 1024;               // unpacked at a time
constexpr std::uint64_t kSpacing_Least = 512 * 1024;   // bytes between two saved states
constexpr std::uint64_t kPoints_Most = 24;

}   // namespace

OSErr CByteSource_Zip::Open(const CFileRef& zip, const CZipMember& member) {
    auto file = std::make_unique<CByteSource_File>();
    if (const OSErr err = file->Open(zip); Failed(err)) return err;
    return Open(std::move(file), member);
}

OSErr CByteSource_Zip::Open(std::unique_ptr<CByteSource> source, const CZipMember& member) {
    i_source = std::move(source);
    i_member = member;
    i_fault = ZipFault::kNone;
    i_toldB = false;
    i_posL = i_checkedL = i_atL = i_packedAtL = i_workL = 0;
    i_crc = 0;
    i_unpacker.reset();
    i_left = {};
    i_points.clear();
    i_spacingL = std::max(kSpacing_Least, member.sizeL / kPoints_Most + 1);
    const ZipFault fault = member.fault != ZipFault::kNone ? member.fault : ReadHeader();
    if (fault == ZipFault::kNone) return noErr;
    i_source.reset();
    return Told(fault);
}

/** The member's own header says where the data begin. It has to agree with the directory on what it is. */
ZipFault CByteSource_Zip::ReadHeader() {
    std::byte header[kZip_LocalBytes];
    if (const ZipFault fault = ReadZipAt(*i_source, i_member.headerAt, header); fault != ZipFault::kNone) return fault;
    if (ZipU32(header, 0) != kZip_Local) return ZipFault::kLocalHeader;
    const std::uint16_t flags = ZipU16(header, 6);
    if ((flags & (CZipMember::kFlag_ENCRYPTED | CZipMember::kFlag_MASKED)) != 0) return ZipFault::kEncrypted;
    if (ZipU16(header, 8) != i_member.method) return ZipFault::kLocalHeader;
    i_dataAt = i_member.headerAt + kZip_LocalBytes + ZipU16(header, 26) + ZipU16(header, 28);
    return i_dataAt <= i_source->Size() ? ZipFault::kNone : ZipFault::kTruncated;
}

OSErr CByteSource_Zip::Told(ZipFault fault) {
    if (fault == ZipFault::kAborted) return abortErr;
    i_fault = fault;
    if (!i_toldB) LogF("### Error reading zip member “%s”: %s", i_member.name.c_str(), TextOf(fault));
    i_toldB = true;
    return StatusOf(fault);
}

OSErr CByteSource_Zip::Seek(std::uint64_t position) {
    if (!i_source) return fnOpnErr;
    if (position > Size()) return paramErr;
    i_posL = position;
    return noErr;
}

OSErr CByteSource_Zip::Read(std::span<std::byte> to, std::size_t& got) {
    got = 0;
    if (!i_source) return i_fault == ZipFault::kNone ? fnOpnErr : StatusOf(i_fault);
    const std::size_t wantL = static_cast<std::size_t>(std::min<std::uint64_t>(to.size(), Size() - i_posL));
    const bool storedB = i_member.method == static_cast<std::uint16_t>(ZipMethod::kStored);
    const auto part = to.first(wantL);
    ZipFault fault = i_abortB.load() ? ZipFault::kAborted : ZipFault::kNone;
    if (wantL > 0 && fault == ZipFault::kNone) fault = storedB ? ReadStored(part, got) : ReadPacked(part, got);
    Check(part.first(got), i_posL);
    i_posL += got;
    if (fault == ZipFault::kNone && i_posL == Size()) fault = CheckEnd();
    if (fault != ZipFault::kNone) return Told(fault);
    return wantL < to.size() ? eofErr : noErr;
}

ZipFault CByteSource_Zip::ReadStored(std::span<std::byte> to, std::size_t& got) {
    const std::uint64_t at = i_dataAt + i_posL;
    const std::uint64_t thereL = i_source->Size() - std::min(i_source->Size(), at);
    const std::size_t sizeL = static_cast<std::size_t>(std::min<std::uint64_t>(to.size(), thereL));
    if (Failed(i_source->Seek(std::min(at, i_source->Size()))) || Failed(i_source->Read(to.first(sizeL), got)))
        return ZipFault::kRead;
    return sizeL < to.size() ? ZipFault::kTruncated : ZipFault::kNone;
}

ZipFault CByteSource_Zip::ReadPacked(std::span<std::byte> to, std::size_t& got) {
    ZipFault fault = GoTo(i_posL);
    while (fault == ZipFault::kNone && got < to.size()) {
        std::size_t some = 0;
        fault = Unpack(to.subspan(got), some);
        got += some;
    }
    return fault;
}

/** Brings the unpacker to `position`, from where it is or from the nearest saved state before. */
ZipFault CByteSource_Zip::GoTo(std::uint64_t position) {
    Restore(position);
    if (!i_unpacker) return ZipFault::kRead;   // no memory
    if (i_atL == position) return ZipFault::kNone;
    std::vector<std::byte> dropped(kStep);
    while (i_atL < position) {
        const std::size_t wantL = static_cast<std::size_t>(std::min<std::uint64_t>(kStep, position - i_atL));
        const std::uint64_t at = i_atL;
        std::size_t some = 0;
        const ZipFault fault = Unpack(std::span(dropped).first(wantL), some);
        Check(std::span(dropped).first(some), at);
        if (fault != ZipFault::kNone) return fault;
    }
    return ZipFault::kNone;
}

const CByteSource_Zip::Point* CByteSource_Zip::PointBefore(std::uint64_t position) const {
    const auto after = std::ranges::upper_bound(i_points, position, {}, &Point::at);
    return after == i_points.begin() ? nullptr : &*std::prev(after);
}

/** The unpacker stands before `position`, and no saved state is nearer. */
bool CByteSource_Zip::IsNear(std::uint64_t position, const Point* pointP) const {
    return i_unpacker && i_atL <= position && i_atL >= (pointP != nullptr ? pointP->at : 0);
}

std::uint64_t CByteSource_Zip::StoredSize() const {
    return i_source ? std::min(i_member.packedL, i_source->Size() - std::min(i_source->Size(), i_dataAt)) : 0;
}

std::uint64_t CByteSource_Zip::WayTo(std::uint64_t position) const {
    if (i_member.method == static_cast<std::uint16_t>(ZipMethod::kStored)) return 0;
    const Point* const pointP = PointBefore(position);
    return position - (IsNear(position, pointP) ? i_atL : pointP != nullptr ? pointP->at : 0);
}

void CByteSource_Zip::Restore(std::uint64_t position) {
    const Point* const bestP = PointBefore(position);
    const std::uint64_t bestAt = bestP != nullptr ? bestP->at : 0;
    if (IsNear(position, bestP)) return;
    i_unpacker = bestP != nullptr ? bestP->state->Clone() : CZipUnpacker::Make(i_member.method);
    i_atL = bestAt;
    i_packedAtL = bestP != nullptr ? bestP->packedAt : 0;
    i_left = {};
}

/** Some bytes, at least one, or a fault; `got` counts with both. */
ZipFault CByteSource_Zip::Unpack(std::span<std::byte> to, std::size_t& got) {
    got = 0;
    to = to.first(std::min(to.size(), kStep));
    // Not over the place of the next saved state.
    const std::uint64_t lastAt = i_points.empty() ? 0 : i_points.back().at;
    if (i_atL < lastAt + i_spacingL)
        to = to.first(static_cast<std::size_t>(std::min<std::uint64_t>(to.size(), lastAt + i_spacingL - i_atL)));
    while (got == 0) {
        if (i_abortB.load()) return ZipFault::kAborted;
        const ZipFault filled = i_left.empty() ? FillPacked() : ZipFault::kNone;
        const CZipUnpacker::Step step = i_unpacker->Run(i_left, to);
        i_left = i_left.subspan(step.takenL);
        got = step.givenL;
        i_atL += got;
        i_workL += got;
        ZipFault fault = ZipFault::kNone;
        if (step.status == CZipUnpacker::Status::kBad) fault = ZipFault::kData;
        // Everything that was told is there when the end comes with the last byte: CheckEnd looks at that.
        else if (step.status == CZipUnpacker::Status::kEnd && i_atL < Size())
            fault = ZipFault::kSizes;
        else if (got == 0 && i_left.empty() && filled != ZipFault::kNone)
            fault = filled;
        if (fault != ZipFault::kNone) {
            i_unpacker.reset();
            return fault;
        }
        if (step.status == CZipUnpacker::Status::kEnd) break;
    }
    SavePoint();
    return ZipFault::kNone;
}

/** The next block of packed bytes. A fault when there are none, which is one only if the unpacker still wants some. */
ZipFault CByteSource_Zip::FillPacked() {
    if (i_packedAtL >= i_member.packedL) return ZipFault::kSizes;
    const std::uint64_t at = i_dataAt + i_packedAtL;
    if (at >= i_source->Size()) return ZipFault::kTruncated;
    if (i_packed.empty()) i_packed.resize(kBlock);
    const std::uint64_t mostL =
        std::min({i_member.packedL - i_packedAtL, i_source->Size() - at, std::uint64_t{kBlock}});
    std::size_t got = 0;
    const auto block = std::span(i_packed).first(static_cast<std::size_t>(mostL));
    if (Failed(i_source->Seek(at)) || Failed(i_source->Read(block, got))) return ZipFault::kRead;
    i_left = block.first(got);
    i_packedAtL += got;
    return ZipFault::kNone;
}

void CByteSource_Zip::SavePoint() {
    const std::uint64_t lastAt = i_points.empty() ? 0 : i_points.back().at;
    if (i_atL < lastAt + i_spacingL || i_atL >= Size()) return;
    if (auto state = i_unpacker->Clone()) i_points.push_back({i_atL, i_packedAtL - i_left.size(), std::move(state)});
}

/** Adds what follows the bytes that were seen so far to the checksum. */
void CByteSource_Zip::Check(std::span<const std::byte> bytes, std::uint64_t at) {
    if (at > i_checkedL || at + bytes.size() <= i_checkedL) return;
    bytes = bytes.subspan(static_cast<std::size_t>(i_checkedL - at));
    i_crc = static_cast<std::uint32_t>(crc32_z(i_crc, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));
    i_checkedL += bytes.size();
}

/** At the size that was told: there must be no more, and the checksum has to agree if every byte was seen. */
ZipFault CByteSource_Zip::CheckEnd() {
    if (i_fault != ZipFault::kNone && i_checkedL == Size()) return i_fault;
    if (i_unpacker && i_atL == Size()) {
        std::array<std::byte, 1> more;
        for (;;) {
            if (i_abortB.load()) return ZipFault::kAborted;
            const ZipFault filled = i_left.empty() ? FillPacked() : ZipFault::kNone;
            const CZipUnpacker::Step step = i_unpacker->Run(i_left, more);
            i_left = i_left.subspan(step.takenL);
            ZipFault fault = ZipFault::kNone;
            if (step.givenL > 0)
                fault = ZipFault::kSizes;
            else if (step.status == CZipUnpacker::Status::kBad)
                fault = ZipFault::kData;
            else if (step.status == CZipUnpacker::Status::kEnd)
                break;
            else if (i_left.empty() && filled != ZipFault::kNone)
                fault = filled;
            if (fault == ZipFault::kNone) continue;
            i_unpacker.reset();
            return fault;
        }
    }
    return i_checkedL == Size() && i_crc != i_member.crc ? ZipFault::kChecksum : ZipFault::kNone;
}
