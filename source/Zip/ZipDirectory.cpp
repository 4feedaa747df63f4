#include "Zip/ZipDirectory.h"

#include <algorithm>
#include <numeric>

#include "Zip/ZipRecords.h"

namespace {

constexpr std::uint64_t kTail_Most = kZip_EndBytes + 0xFFFF + 64 * 1024;   // the record, its comment, what was appended
constexpr int kEnds_Most = 16;        // signatures in the tail that are tried: a comment may hold any bytes
constexpr std::size_t kProbes = 64;   // members whose own header is looked at, to see that the places are right
constexpr std::uint16_t kIn64_16 = 0xFFFF;
constexpr std::uint32_t kIn64_32 = 0xFFFFFFFF;

/** What the end record tells, or its 64-bit form. */
struct ZipEnd {
    std::uint64_t membersL = 0, sizeL = 0, at = 0;   // of the directory
    std::uint64_t endAt = 0;                         // where it has to end: at the first of the end records
};

ZipFault ReadEnd64(CByteSource& source, std::uint64_t endAt, ZipEnd& end) {
    if (endAt < kZip_Locator64Bytes) return ZipFault::kDirectory;
    const std::uint64_t locatorAt = endAt - kZip_Locator64Bytes;
    std::byte locator[kZip_Locator64Bytes];
    if (const ZipFault fault = ReadZipAt(source, locatorAt, locator); fault != ZipFault::kNone) return fault;
    if (ZipU32(locator, 0) != kZip_Locator64 || locatorAt < kZip_End64Bytes) return ZipFault::kDirectory;
    if (ZipU32(locator, 16) > 1) return ZipFault::kSplit;
    // Where it is told to be; right in front of the locator when bytes before the zip have moved it.
    for (const std::uint64_t at : {ZipU64(locator, 8), locatorAt - kZip_End64Bytes}) {
        std::byte record[kZip_End64Bytes];
        if (at > locatorAt - kZip_End64Bytes || ReadZipAt(source, at, record) != ZipFault::kNone) continue;
        if (ZipU32(record, 0) != kZip_End64) continue;
        if (ZipU32(record, 16) != 0 || ZipU32(record, 20) != 0) return ZipFault::kSplit;
        end = {ZipU64(record, 32), ZipU64(record, 40), ZipU64(record, 48), at};
        return ZipU64(record, 24) == end.membersL ? ZipFault::kNone : ZipFault::kSplit;
    }
    return ZipFault::kDirectory;
}

ZipFault ReadEnd(CByteSource& source, std::uint64_t endAt, ZipBytes record, ZipEnd& end) {
    end = {ZipU16(record, 10), ZipU32(record, 12), ZipU32(record, 16), endAt};
    if (end.membersL == kIn64_16 || end.sizeL == kIn64_32 || end.at == kIn64_32) {
        const ZipFault fault = ReadEnd64(source, endAt, end);
        // Exactly 65,535 members need no 64-bit record.
        if (fault != ZipFault::kDirectory || end.sizeL == kIn64_32 || end.at == kIn64_32) return fault;
    }
    const std::uint16_t disk = ZipU16(record, 4), directoryDisk = ZipU16(record, 6);
    if ((disk != 0 && disk != kIn64_16) || (directoryDisk != 0 && directoryDisk != kIn64_16) ||
        ZipU16(record, 8) != ZipU16(record, 10))
        return ZipFault::kSplit;
    return ZipFault::kNone;
}

/** One record of the directory off the front of `bytes`. `moved` is what lies before the zip. */
ZipFault ReadCentral(ZipBytes& bytes, std::uint64_t moved, std::uint64_t directoryAt,
                     std::vector<CZipMember>& members) {
    if (bytes.size() < kZip_CentralBytes || ZipU32(bytes, 0) != kZip_Central) return ZipFault::kDirectory;
    const std::size_t nameL = ZipU16(bytes, 28), extraL = ZipU16(bytes, 30), commentL = ZipU16(bytes, 32);
    if (nameL + extraL + commentL > bytes.size() - kZip_CentralBytes) return ZipFault::kDirectory;
    CZipMember member;
    member.flags = ZipU16(bytes, 8);
    member.method = ZipU16(bytes, 10);
    member.crc = ZipU32(bytes, 16);
    member.packedL = ZipU32(bytes, 20);
    member.sizeL = ZipU32(bytes, 24);
    member.headerAt = ZipU32(bytes, 42);
    const std::string_view plain = ZipText(bytes.subspan(kZip_CentralBytes, nameL));
    member.name = ZipName(plain, (member.flags & CZipMember::kFlag_UTF8) != 0);
    if (!ReadZipExtra(bytes.subspan(kZip_CentralBytes + nameL, extraL), plain, member)) return ZipFault::kDirectory;
    if (member.headerAt >= directoryAt - moved) return ZipFault::kDirectory;
    member.headerAt += moved;
    const std::uint64_t roomL = directoryAt - member.headerAt;
    if (roomL < kZip_LocalBytes || member.packedL > roomL - kZip_LocalBytes) member.fault = ZipFault::kSizes;
    JudgeZipMember(member);
    members.push_back(std::move(member));
    bytes = bytes.subspan(kZip_CentralBytes + nameL + extraL + commentL);
    return ZipFault::kNone;
}

/** Members that reach into the next one: the way to make a small file unpack to a huge one, and never made in earnest. */
void FindOverlaps(std::vector<CZipMember>& members) {
    std::vector<std::size_t> order(members.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, [&](std::size_t n) { return members[n].headerAt; });
    for (std::size_t n = 1; n < order.size(); ++n) {
        CZipMember& member = members[order[n - 1]];
        const std::uint64_t roomL = members[order[n]].headerAt - member.headerAt;
        if (member.fault == ZipFault::kNone && (roomL < kZip_LocalBytes || member.packedL > roomL - kZip_LocalBytes))
            member.fault = ZipFault::kOverlap;
    }
}

/** The headers in front of the members are where the directory says. */
bool ArePlacesRight(CByteSource& source, const std::vector<CZipMember>& members) {
    return std::ranges::all_of(std::span(members).first(std::min(members.size(), kProbes)),
                               [&](const CZipMember& member) {
                                   std::byte signature[4];
                                   return ReadZipAt(source, member.headerAt, signature) == ZipFault::kNone &&
                                          ZipU32(signature, 0) == kZip_Local;
                               });
}

ZipFault ReadDirectory(CByteSource& source, const ZipEnd& end, std::vector<CZipMember>& members) {
    if (end.sizeL > end.endAt) return ZipFault::kDirectory;
    if (end.membersL > kZip_MostMembers || end.sizeL > kZip_DirectoryMost) return ZipFault::kManyMembers;
    if (end.membersL > end.sizeL / kZip_CentralBytes) return ZipFault::kDirectory;
    // Right in front of the end, whatever the place that is told: the difference is what somebody put before the zip.
    std::uint64_t at = end.endAt - end.sizeL;
    if (end.at > at) return ZipFault::kDirectory;
    std::uint64_t moved = at - end.at;
    std::vector<std::byte> whole(static_cast<std::size_t>(end.sizeL));
    if (const ZipFault fault = ReadZipAt(source, at, whole); fault != ZipFault::kNone) return fault;
    if (end.membersL > 0 && ZipU32(whole, 0) != kZip_Central) {
        // Some programs put more between the directory and its end.
        if (const ZipFault fault = ReadZipAt(source, end.at, whole); fault != ZipFault::kNone) return fault;
        at = end.at;
        moved = 0;
    }
    ZipBytes left(whole);
    std::vector<CZipMember> got;
    got.reserve(static_cast<std::size_t>(end.membersL));
    // As long as there are records: the count of a plain end record runs over at 65,536.
    while (left.size() >= 4 && ZipU32(left, 0) == kZip_Central) {
        if (got.size() == kZip_MostMembers) return ZipFault::kManyMembers;
        if (const ZipFault fault = ReadCentral(left, moved, at, got); fault != ZipFault::kNone) return fault;
    }
    if (got.size() != end.membersL && (got.size() & 0xFFFF) != end.membersL) return ZipFault::kDirectory;
    FindOverlaps(got);
    if (!ArePlacesRight(source, got)) return ZipFault::kDirectory;
    members = std::move(got);
    return ZipFault::kNone;
}

}   // namespace

ZipFault ReadZipDirectory(CByteSource& source, std::vector<CZipMember>& members) {
    const std::uint64_t tailL = std::min(source.Size(), kTail_Most), tailAt = source.Size() - tailL;
    std::vector<std::byte> tail(static_cast<std::size_t>(tailL));
    if (const ZipFault fault = ReadZipAt(source, tailAt, tail); fault != ZipFault::kNone) return fault;
    ZipFault first = ZipFault::kNone;
    bool firstExactB = false;
    int triedL = 0;
    for (std::size_t n = tail.size(); n-- > 0 && triedL < kEnds_Most;) {
        const ZipBytes record = ZipBytes(tail).subspan(n);
        if (record.size() < kZip_EndBytes || record[0] != std::byte{'P'} || ZipU32(record, 0) != kZip_End) continue;
        ++triedL;
        ZipFault fault = ZipFault::kTruncated;   // in the middle of its comment
        if (ZipU16(record, 20) <= record.size() - kZip_EndBytes) {
            ZipEnd end;
            fault = ReadEnd(source, tailAt + n, record, end);
            if (fault == ZipFault::kNone) fault = ReadDirectory(source, end, members);
            if (fault == ZipFault::kNone) return fault;
        }
        // A record whose comment ends with the file is the one that was meant; others may be words of a comment.
        const bool exactB = ZipU16(record, 20) == record.size() - kZip_EndBytes;
        if (first == ZipFault::kNone || (exactB && !firstExactB)) first = fault;
        firstExactB |= exactB;
    }
    if (first != ZipFault::kNone) return first;
    std::byte signature[4];
    const bool beginsB = ReadZipAt(source, 0, signature) == ZipFault::kNone && ZipU32(signature, 0) == kZip_Local;
    return beginsB ? ZipFault::kTruncated : ZipFault::kNotZip;
}
