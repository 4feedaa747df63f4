#pragma once
#include <cstdint>
#include <span>
#include <string>

#include "Audio/CSafeOutput.h"
#include "Audio/CSpooler.h"

/** Base of the sinks that make a sound file out of 44.1 kHz stereo of 16 bits: the file takes its name when the spool
    is closed without an error, and not before.
    Threads  as CSpooler; a subclass's parts run one at a time. */
class CAS_SoundWriter : public CSpooler {
protected:
    CAS_SoundWriter(const CFileRef& file, std::string name);

    /** A file is open and empty. `frames` is what will come, 0 when not known. */
    virtual OSErr Begin(CSafeOutput& out, std::uint64_t frames) = 0;
    /** Whole frames. */
    virtual OSErr Encode(CSafeOutput& out, std::span<const std::int16_t> stereo) = 0;
    /** The last bytes, the header. */
    virtual OSErr End(CSafeOutput& out) = 0;
    /** Lets go of what Begin made; also after a failure. */
    virtual void Forget() {}

    OSErr Open_i(bool writeB, std::uint64_t& sizeL) override;
    OSErr Close_i(bool writeB) override;
    OSErr Write_i(std::span<const std::byte> bytes) override;

private:
    CSafeOutput i_out;   // all under the write lock
    std::vector<std::int16_t> i_block;
    OSErr i_writeErr = noErr;   // the first failure
};
