#include <algorithm>
#include <array>
#include <cstring>

#include "Zip/ZipDirectory.h"
#include "Zip/ZipRecords.h"

namespace {

constexpr std::uint64_t kJunk_Most = 1 << 20;   // before the first member
constexpr int kLostSearches_Most = 8;           // each may read the rest of the file
constexpr int kDescriptors_Most = 10'000;       // signatures looked at for one member
constexpr std::uint64_t kNowhere = UINT64_MAX;

/** Walks a file for signatures, block by block. */
class CSignatureScan {
public:
    explicit CSignatureScan(CByteSource& source) : i_source(source), i_block(64 * 1024) {}
    /** The first place from `at` on, before `endAt`, that holds `signature`; kNowhere for none. */
    std::uint64_t Find(std::uint32_t signature, std::uint64_t at, std::uint64_t endAt) {
        const std::array<char, 4> wanted{static_cast<char>(signature), static_cast<char>(signature >> 8),
                                         static_cast<char>(signature >> 16), static_cast<char>(signature >> 24)};
        endAt = std::min(endAt, i_source.Size());
        while (at < endAt && endAt - at >= wanted.size()) {
            if (!Load(at)) return kNowhere;
            const std::string_view block = ZipText(std::span(i_block).first(i_blockL));
            const std::size_t foundAt =
                block.find(std::string_view(wanted.data(), wanted.size()), static_cast<std::size_t>(at - i_blockAt));
            if (foundAt != std::string_view::npos) {
                at = i_blockAt + foundAt;
                return at < endAt && endAt - at >= wanted.size() ? at : kNowhere;
            }
            at = i_blockAt + i_blockL - (wanted.size() - 1);
        }
        return kNowhere;
    }

private:
    /** A block with a signature's bytes from `at` on. One that is there stays: a file may be full of signatures. */
    bool Load(std::uint64_t at) {
        if (at >= i_blockAt && at - i_blockAt + 4 <= i_blockL) return true;
        i_blockAt = at;
        i_blockL = static_cast<std::size_t>(std::min<std::uint64_t>(i_block.size(), i_source.Size() - at));
        if (ReadZipAt(i_source, at, std::span(i_block).first(i_blockL)) == ZipFault::kNone) return true;
        i_blockL = 0;
        return false;
    }
    CByteSource& i_source;
    std::vector<std::byte> i_block;
    std::uint64_t i_blockAt = 0;
    std::size_t i_blockL = 0;
};

/** Sizes and checksum that stand behind the data, in a descriptor that agrees with its own place. False for none. */
bool FindDescriptor(CByteSource& source, CSignatureScan& scan, std::uint64_t dataAt, CZipMember& member) {
    std::uint64_t at = dataAt;
    for (int n = 0; n < kDescriptors_Most; ++n, ++at) {
        at = scan.Find(kZip_Descriptor, at, kNowhere);
        if (at == kNowhere) return false;
        std::byte record[24]{};
        const std::uint64_t leftL = std::min<std::uint64_t>(source.Size() - at, sizeof record);
        if (ReadZipAt(source, at, std::span(record).first(static_cast<std::size_t>(leftL))) != ZipFault::kNone)
            return false;
        const std::uint64_t packed = at - dataAt;
        const bool plainB = leftL >= 16 && ZipU32(record, 8) == packed;
        const bool in64B = !plainB && leftL >= 24 && ZipU64(record, 8) == packed;
        if (!plainB && !in64B) continue;
        member.crc = ZipU32(record, 4);
        member.packedL = packed;
        member.sizeL = plainB ? ZipU32(record, 12) : ZipU64(record, 16);
        return true;
    }
    return false;
}

}   // namespace

ZipFault ReadZipHeaders(CByteSource& source, std::vector<CZipMember>& members) {
    CSignatureScan scan(source);
    std::vector<CZipMember> got;
    int lostL = 0;
    std::uint64_t namesL = 0;
    std::uint64_t at = scan.Find(kZip_Local, 0, kJunk_Most);
    while (at != kNowhere && got.size() < kZip_MostMembers) {
        std::byte header[kZip_LocalBytes];
        if (ReadZipAt(source, at, header) != ZipFault::kNone) break;
        const std::size_t nameL = ZipU16(header, 26), extraL = ZipU16(header, 28);
        std::vector<std::byte> texts(nameL + extraL);
        std::uint64_t next = at + 4;
        if (ReadZipAt(source, at + kZip_LocalBytes, texts) == ZipFault::kNone) {
            const std::uint64_t dataAt = at + kZip_LocalBytes + texts.size();
            CZipMember member;
            member.flags = ZipU16(header, 6);
            member.method = ZipU16(header, 8);
            member.crc = ZipU32(header, 14);
            member.packedL = ZipU32(header, 18);
            member.sizeL = ZipU32(header, 22);
            const std::string_view plain = ZipText(ZipBytes(texts).first(nameL));
            member.name = ZipName(plain, (member.flags & CZipMember::kFlag_UTF8) != 0);
            bool knownB = ReadZipExtra(ZipBytes(texts).subspan(nameL), plain, member);
            member.headerAt = at;
            if (knownB && (member.flags & CZipMember::kFlag_SIZES_BEHIND) != 0 && member.packedL == 0) {
                knownB = lostL < kLostSearches_Most && FindDescriptor(source, scan, dataAt, member);
                if (!knownB) ++lostL;
            }
            next = dataAt;
            if (knownB) {
                // One that the end of the file cuts is kept: what is there of it can be played.
                if (member.packedL <= source.Size() - dataAt) next = dataAt + member.packedL;
                JudgeZipMember(member);
                namesL += member.name.size();
                if (namesL > kZip_DirectoryMost) return ZipFault::kManyMembers;
                got.push_back(std::move(member));
            }
        }
        std::byte signature[4];
        if (ReadZipAt(source, next, signature) == ZipFault::kNone &&
            (ZipU32(signature, 0) == kZip_Central || ZipU32(signature, 0) == kZip_End))
            break;
        at = scan.Find(kZip_Local, next, kNowhere);
    }
    if (got.empty()) return ZipFault::kNotZip;
    members = std::move(got);
    return ZipFault::kNone;
}
