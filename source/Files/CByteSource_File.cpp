#include "Files/CByteSource_File.h"

#include <algorithm>

OSErr CByteSource_File::Open(const CFileRef& file) {
    if (const OSErr err = i_fork.Open(file, FileAccess::kRead); Failed(err)) return err;
    return i_fork.GetEOF(i_sizeL);
}

OSErr CByteSource_File::Read(std::span<std::byte> to, std::size_t& got) {
    // What was added behind the size told is not there, so that a reader's sums stay true.
    const std::uint64_t leftL = i_sizeL - std::min(i_sizeL, i_fork.GetPos());
    const std::size_t mostL = static_cast<std::size_t>(std::min<std::uint64_t>(to.size(), leftL));
    const OSErr err = i_fork.Read(to.first(mostL), got);
    if (err == eofErr) return ioErr;   // the file was cut since
    return !Failed(err) && mostL < to.size() ? eofErr : err;
}

OSErr CByteSource_File::Seek(std::uint64_t position) {
    if (position > i_sizeL) return paramErr;
    return i_fork.SetPos(CDataFork::PosMode::kFromStart, static_cast<std::int64_t>(position));
}
