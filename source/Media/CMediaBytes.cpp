#include "Media/CMediaBytes.h"

#include <algorithm>
#include <cstdio>

extern "C" {
#include <libavformat/avformat.h>
}

namespace {
constexpr int kMediaBytes_Buffer = 64 * 1024;
}   // namespace

CMediaBytes::~CMediaBytes() {
    if (i_contextP == nullptr) return;
    av_freep(&i_contextP->buffer);   // libavformat may have put another one there
    avio_context_free(&i_contextP);
}

OSErr CMediaBytes::Open(CByteSource& source) {
    i_sourceP.store(&source);
    if (IsAborted()) source.Abort();   // it came before there was anything to hand it on to
    auto* bufferP = static_cast<unsigned char*>(av_malloc(kMediaBytes_Buffer));
    if (bufferP != nullptr)
        i_contextP = avio_alloc_context(bufferP, kMediaBytes_Buffer, 0, this, &ReadPacket, nullptr, &SeekTo);
    if (i_contextP != nullptr) return noErr;
    av_free(bufferP);
    return memFullErr;
}

void CMediaBytes::Abort() noexcept {
    i_abortB.store(true);
    if (CByteSource* const sourceP = i_sourceP.load(); sourceP != nullptr) sourceP->Abort();
}

void CMediaBytes::SetBudget(std::uint64_t bytes) noexcept {
    i_budgetL = i_wayBudgetL = bytes;
    if (bytes != kBudget_None) i_wayBudgetL = std::max(bytes, Source().StoredSize() * 4);
}

/** The next read through the context may be made; its way is then paid for. */
bool CMediaBytes::IsInBudget() {
    if (i_budgetL == kBudget_None) return true;
    const std::uint64_t wayL = i_posL < Source().Size() ? Source().WayTo(i_posL) : 0;
    i_spentB = i_spentB || i_budgetL == 0 || wayL > i_wayBudgetL;
    if (i_budgetL == 0 || wayL > i_wayBudgetL) return false;
    i_wayBudgetL -= wayL;
    return true;
}

bool CMediaBytes::IsNearEverywhere() const {
    return Size() > 0 && Source().WayTo(0) == 0 && Source().WayTo(Size() - 1) == 0;
}

void CMediaBytes::ForgetErr() noexcept {
    i_err = noErr;
    i_contextP->error = 0;
}

OSErr CMediaBytes::ReadSome(std::uint64_t at, std::span<std::byte> to, std::size_t& got) {
    got = 0;
    if (IsAborted()) return abortErr;
    if (at >= Source().Size()) return eofErr;
    if (Source().Position() != at) {
        if (const OSErr err = Source().Seek(at); Failed(err)) return err;
    }
    const OSErr err = Source().Read(to, got);
    got = std::min(got, to.size());
    return err;
}

OSErr CMediaBytes::ReadAt(std::uint64_t at, std::span<std::byte> to) {
    while (!to.empty()) {
        std::size_t got = 0;
        const OSErr err = ReadSome(at, to, got);
        if (got == 0) return Failed(err) ? err : eofErr;
        at += got;
        to = to.subspan(got);
    }
    return noErr;
}

int CMediaBytes::ReadPacket(void* selfP, std::uint8_t* toP, int sizeL) {
    auto& self = *static_cast<CMediaBytes*>(selfP);
    if (self.IsAborted()) return AVERROR_EXIT;
    if (sizeL <= 0) return AVERROR_EOF;
    if (!self.IsInBudget()) return AVERROR_EOF;
    std::size_t got = 0;
    const OSErr err =
        self.ReadSome(self.i_posL, std::as_writable_bytes(std::span(toP, static_cast<std::size_t>(sizeL))), got);
    self.i_posL += got;
    if (self.i_budgetL != kBudget_None) self.i_budgetL -= std::min<std::uint64_t>(self.i_budgetL, got);
    if (got > 0) return static_cast<int>(got);
    if (err == abortErr) return AVERROR_EXIT;
    if (!Failed(err) || err == eofErr) return AVERROR_EOF;
    if (!Failed(self.i_err)) self.i_err = err;
    return AVERROR(EIO);
}

std::int64_t CMediaBytes::SeekTo(void* selfP, std::int64_t offset, int whence) {
    auto& self = *static_cast<CMediaBytes*>(selfP);
    const auto size = static_cast<std::int64_t>(std::min<std::uint64_t>(self.Source().Size(), INT64_MAX));
    whence &= ~AVSEEK_FORCE;
    if (whence == AVSEEK_SIZE) return size;
    std::int64_t base = 0;
    if (whence == SEEK_CUR) base = static_cast<std::int64_t>(self.i_posL);
    if (whence == SEEK_END) base = size;
    std::int64_t to = 0;
    if (__builtin_add_overflow(base, offset, &to) || to < 0) return AVERROR(EINVAL);
    self.i_posL = static_cast<std::uint64_t>(to);   // a place after the end reads as the end
    return to;
}
