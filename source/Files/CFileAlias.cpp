#include "Files/CFileAlias.h"

#include <deque>
#include <set>
#include <string>
#include <string_view>

#include "Files/FSError.h"

namespace {

constexpr std::string_view kAlias_Magic = "VAls";
constexpr std::uint64_t kAlias_Version = 1;
constexpr std::size_t kPath_MaxBytes = 4096;   // the kernel takes no longer one

void Put(std::vector<std::byte>& out, std::uint64_t value, unsigned bytes) {
    for (unsigned n = bytes; n-- > 0;) out.push_back(static_cast<std::byte>(value >> (8 * n) & 255U));
}

/** Big-endian numbers from the front of `in`; false and untouched when it is too short. */
bool Take(std::span<const std::byte>& in, std::uint64_t& value, unsigned bytes) {
    if (in.size() < bytes) return false;
    value = 0;
    for (unsigned n = 0; n < bytes; ++n) value = value << 8 | std::to_integer<std::uint64_t>(in[n]);
    in = in.subspan(bytes);
    return true;
}

/** The file of an identity below some folders, nearest first, with one bound on all looks. */
class Search {
public:
    explicit Search(const FileIdentity& wanted) : i_wanted(wanted) {}

    bool Below(const std::filesystem::path& top, std::filesystem::path& found) {
        std::deque<std::filesystem::path> folders{top};
        while (!folders.empty()) {
            const std::filesystem::path folder = std::move(folders.front());
            folders.pop_front();
            if (!i_seen.insert(folder).second) continue;
            std::vector<std::string> names;
            if (CFileCalls::Get().List(folder, names) != 0) continue;   // a closed folder hides nothing we may open
            for (const std::string& name : names) {
                if (i_looksL++ == CFileAlias::kSearch_Most) return false;
                FileInfo info;
                if (CFileCalls::Get().Look(folder / name, false, info) != 0) continue;
                if (i_wanted.Is(FileIdentity::Of(info))) {
                    found = folder / name;
                    return true;
                }
                if (info.kind == FileKind::kFolder) folders.push_back(folder / name);
            }
        }
        return false;
    }

private:
    FileIdentity i_wanted;
    std::size_t i_looksL = 0;
    std::set<std::filesystem::path> i_seen;
};

}   // namespace

OSErr CFileAlias::Resolve(Path& found) const {
    FileInfo info;
    const int err = CFileCalls::Get().Look(i_path, true, info);
    if (err == 0) {
        found = i_path;
        return noErr;
    }
    if (const OSErr status = MapErrno(err); status != fnfErr) return status;
    if (i_identity.inodeL == 0) return fnfErr;
    Search search(i_identity);
    Path folder = i_path.parent_path();
    for (int level = 0; level < 2 && folder.has_relative_path(); ++level, folder = folder.parent_path())
        if (search.Below(folder, found)) return noErr;
    return fnfErr;
}

std::vector<std::byte> CFileAlias::Encode() const {
    std::vector<std::byte> out;
    for (const char c : kAlias_Magic) out.push_back(static_cast<std::byte>(c));
    Put(out, kAlias_Version, 2);
    Put(out, i_identity.deviceL, 8);
    Put(out, i_identity.inodeL, 8);
    Put(out, static_cast<std::uint64_t>(i_identity.bornL), 8);
    const std::string& path = i_path.native();
    Put(out, path.size(), 4);
    for (const char c : path) out.push_back(static_cast<std::byte>(c));
    return out;
}

std::optional<CFileAlias> CFileAlias::Decode(std::span<const std::byte> record) {
    for (const char c : kAlias_Magic) {
        if (record.empty() || record.front() != static_cast<std::byte>(c)) return {};
        record = record.subspan(1);
    }
    std::uint64_t version = 0, born = 0, sizeL = 0;
    FileIdentity identity;
    if (!Take(record, version, 2) || version != kAlias_Version) return {};
    if (!Take(record, identity.deviceL, 8) || !Take(record, identity.inodeL, 8) || !Take(record, born, 8)) return {};
    if (!Take(record, sizeL, 4) || sizeL != record.size() || sizeL == 0 || sizeL >= kPath_MaxBytes) return {};
    identity.bornL = static_cast<std::int64_t>(born);
    std::string path(sizeL, '\0');
    for (std::size_t n = 0; n < path.size(); ++n) path[n] = std::to_integer<char>(record[n]);
    if (path.find('\0') != std::string::npos) return {};   // would name another file than it seems to
    return CFileAlias(std::move(path), identity);
}
