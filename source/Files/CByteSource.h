#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

#include "Platform/OSErr.h"

/** Bytes that a reader of media or of archives takes from somewhere: a file, a member of a zip, memory.
    Units    bytes; positions have 64 bits and begin at 0.
    Threads  one at a time; Abort any. Two readers of one file each have a source of their own.
    Owner    whoever made it; a reader that takes it in a `unique_ptr` owns it from then on.
    Errors   statuses. eofErr is the end and nothing else: data that are damaged or cut short give ioErr or another. */
class CByteSource {
public:
    CByteSource() = default;
    virtual ~CByteSource() = default;
    CByteSource(const CByteSource&) = delete;
    CByteSource& operator=(const CByteSource&) = delete;

    /** Fills the front of `to`, from the position on, and moves the position by `got`. A status other than noErr says
        why `got` is less than was asked for, or that a check at the end of the data failed. What `got` counts is good
        to use with any status. */
    virtual OSErr Read(std::span<std::byte> to, std::size_t& got) = 0;
    /** Cheap: what it costs to get there is paid by the next Read. A place after the end is paramErr, the end is not. */
    virtual OSErr Seek(std::uint64_t position) = 0;
    [[nodiscard]] virtual std::uint64_t Position() const = 0;
    /** Of the whole; fixed for the life of the source. */
    [[nodiscard]] virtual std::uint64_t Size() const = 0;

    /** Where the bytes are packed, Size may promise far more than what they are kept in. */
    [[nodiscard]] virtual std::uint64_t StoredSize() const { return Size(); }
    /** Bytes that must be gone through before a Read at `position` gives its first; 0 where any place is near. */
    [[nodiscard]] virtual std::uint64_t WayTo(std::uint64_t /*position*/) const { return 0; }
    /** Also beside another call, which then ends soon: abortErr from now on. Where every call is short there is nothing
        to end. */
    virtual void Abort() noexcept {}
};
