#include "Zip/CZipWriter.h"

#include <minizip/zip.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

#include "Core/CLog.h"
#include "Core/UTF8.h"
#include "Files/CDataFork.h"
#include "Files/FSrObjects.h"
#include "Zip/CZipMember.h"

namespace {

constexpr std::size_t kCopy_Block = 64 * 1024;
constexpr std::uint64_t kPlain_Most = 0xFFFF0000;   // beyond it the packed form, or what follows, may need 64 bits
constexpr uLong kVersionMadeBy = 3 << 8 | 20;       // Unix, 2.0
constexpr std::size_t kName_Most = 0xFFFF;

bool IsGoodName(std::string_view name) {
    CZipMember member;
    member.name = name;
    if (name.empty() || name.size() > kName_Most || member.IsFolder() || member.IsClimbing()) return false;
    while (!name.empty()) {
        const UTF8Char next = NextUTF8(name);
        if (!next.validB || next.code == 0) return false;
        name.remove_prefix(next.bytesL);
    }
    return true;
}

/** Local time, as zips want it; their years begin with 1980. */
tm_zip ZipTime(std::int64_t nanoseconds) {
    const std::time_t seconds = static_cast<std::time_t>(nanoseconds / 1'000'000'000);
    std::tm local{};
    if (::localtime_r(&seconds, &local) == nullptr || local.tm_year < 80) return {0, 0, 0, 1, 0, 1980};
    const auto number = [](int n) { return static_cast<uInt>(n); };
    return {number(local.tm_sec),  number(local.tm_min), number(local.tm_hour),
            number(local.tm_mday), number(local.tm_mon), number(local.tm_year + 1900)};
}

}   // namespace

/** minizip over a CDataFork, so that statuses come from where every file's come from. */
struct CZipWriter::Zip_ {
    CDataFork fork;
    OSErr err = noErr;   // of the first call that failed; minizip itself says only -1
    zipFile zip = nullptr;

    static Zip_& Of(voidpf streamP) { return *static_cast<Zip_*>(streamP); }
    static voidpf Open_(voidpf opaqueP, const void*, int) { return opaqueP; }
    static uLong Read_(voidpf, voidpf streamP, void* toP, uLong sizeL) {
        std::size_t got = 0;
        const OSErr err = Of(streamP).fork.Read({static_cast<std::byte*>(toP), sizeL}, got);
        if (Failed(err) && err != eofErr) Of(streamP).err = err;
        return got;
    }
    // After a failure writes and seeks only seem to go on: minizip leaks a header whose write fails. Done tells the
    // truth.
    static uLong Write_(voidpf, voidpf streamP, const void* fromP, uLong sizeL) {
        Zip_& self = Of(streamP);
        if (!Failed(self.err)) self.err = self.fork.Write({static_cast<const std::byte*>(fromP), sizeL});
        return sizeL;
    }
    static ZPOS64_T Tell_(voidpf, voidpf streamP) { return Of(streamP).fork.GetPos(); }
    static long Seek_(voidpf, voidpf streamP, ZPOS64_T offset, int origin) {
        using enum CDataFork::PosMode;
        const CDataFork::PosMode mode = origin == ZLIB_FILEFUNC_SEEK_SET   ? kFromStart
                                        : origin == ZLIB_FILEFUNC_SEEK_CUR ? kFromMark
                                                                           : kFromEnd;
        Zip_& self = Of(streamP);
        if (!Failed(self.err)) self.err = self.fork.SetPos(mode, static_cast<std::int64_t>(offset));
        return 0;
    }
    static int Close_(voidpf, voidpf) { return 0; }   // the fork is closed by its owner, after the sync
    static int Error_(voidpf, voidpf) { return 0; }
    /** The status of a step of minizip: the file's, else that of `answer`. */
    [[nodiscard]] OSErr Done(int answer) const { return FirstOf(err, answer == ZIP_OK ? noErr : ioErr); }
};

CZipWriter::CZipWriter(Effort effort) : i_effort(effort) {}

CZipWriter::~CZipWriter() {
    if (i_zipP) static_cast<void>(Fail(abortErr));
}

/** The first failure stays; what was written so far goes. */
OSErr CZipWriter::Fail(OSErr err) {
    if (!Failed(i_err)) i_err = err;
    if (!i_zipP) return i_err;
    if (i_zipP->zip != nullptr) zipClose(i_zipP->zip, nullptr);
    i_zipP.reset();
    static_cast<void>(LogStep(FSrDelete(i_file), "deleting an unfinished zip", i_file.GetPath()));
    return i_err;
}

OSErr CZipWriter::Open(const CFileRef& zip) {
    if (Failed(i_err)) return i_err;
    if (i_zipP) return opWrErr;
    auto made = std::make_unique<Zip_>();
    if (const OSErr err = made->fork.Open(zip, FileAccess::kCreateNew); Failed(err)) return i_err = err;
    i_file = zip;
    i_zipP = std::move(made);
    zlib_filefunc64_def calls{&Zip_::Open_, &Zip_::Read_,  &Zip_::Write_, &Zip_::Tell_,
                              &Zip_::Seek_, &Zip_::Close_, &Zip_::Error_, i_zipP.get()};
    i_zipP->zip = zipOpen2_64("", APPEND_STATUS_CREATE, nullptr, &calls);
    return i_zipP->zip != nullptr ? noErr : Fail(memFullErr);
}

OSErr CZipWriter::Add(const CFileRef& file, std::string_view name) {
    if (Failed(i_err)) return i_err;
    if (!i_zipP) return fnOpnErr;
    if (!IsGoodName(name)) return Fail(paramErr);
    CDataFork from;
    if (const OSErr err = from.Open(file, FileAccess::kRead); Failed(err)) return Fail(err);
    FileInfo info;
    if (const OSErr err = from.Look(info); Failed(err)) return Fail(err);
    zip_fileinfo about{};
    about.tmz_date = ZipTime(info.modifiedL);
    about.external_fa = 0100644UL << 16;   // a plain file, for systems that look
    const int in64 = info.bytesL >= kPlain_Most ? 1 : 0;
    const int level = i_effort == Effort::kFast ? Z_BEST_SPEED : Z_DEFAULT_COMPRESSION;
    const int begun = zipOpenNewFileInZip4_64(
        i_zipP->zip, std::string(name).c_str(), &about, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, level, 0,
        -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr, 0, kVersionMadeBy, CZipMember::kFlag_UTF8, in64);
    if (const OSErr err = i_zipP->Done(begun); Failed(err)) return Fail(err);
    if (const OSErr err = Pack(from); Failed(err)) return Fail(err);
    const OSErr err = i_zipP->Done(zipCloseFileInZip(i_zipP->zip));
    return Failed(err) ? Fail(err) : noErr;
}

OSErr CZipWriter::Pack(CDataFork& from) {
    std::vector<std::byte> block(kCopy_Block);
    std::uint64_t wholeL = 0;
    FileInfo info;
    if (const OSErr err = from.Look(info); Failed(err)) return err;
    for (;;) {
        if (i_abortB.load(std::memory_order_relaxed)) return abortErr;
        std::size_t got = 0;
        const OSErr err = from.Read(block, got);
        if (Failed(err) && err != eofErr) return err;
        // A file that grows meanwhile could outgrow the header that was written for it.
        if (got > info.bytesL - wholeL) return ioErr;
        wholeL += got;
        if (got > 0) {
            const int answer = zipWriteInFileInZip(i_zipP->zip, block.data(), static_cast<unsigned>(got));
            if (const OSErr packed = i_zipP->Done(answer); Failed(packed)) return packed;
        }
        i_doneL.fetch_add(got, std::memory_order_relaxed);
        if (err == eofErr) return wholeL == info.bytesL ? noErr : ioErr;
    }
}

OSErr CZipWriter::Close() {
    if (Failed(i_err)) return i_err;
    if (!i_zipP) return fnOpnErr;
    if (i_abortB.load(std::memory_order_relaxed)) return Fail(abortErr);
    const int closed = zipClose(std::exchange(i_zipP->zip, nullptr), nullptr);
    if (const OSErr err = i_zipP->Done(closed); Failed(err)) return Fail(err);
    if (const OSErr err = i_zipP->fork.Sync(); Failed(err)) return Fail(err);
    if (const OSErr err = i_zipP->fork.Close(); Failed(err)) return Fail(err);
    i_zipP.reset();
    return noErr;
}
