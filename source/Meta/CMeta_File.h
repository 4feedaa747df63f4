#pragma once
#include <array>
#include <cstdio>
#include <memory>

#include "Meta/CMeta.h"

/** The metadata of one file, read from its tags and written into them: the base of the tag readers.
    Threads  one at a time, a worker's: reading and writing do I/O, and hold no lock over it. */
class CMeta_File : public CMeta {
public:
    explicit CMeta_File(CFileRef file);
    ~CMeta_File() override;

    [[nodiscard]] const CFileRef& File() const noexcept { return i_file; }

    /** fnfErr when it cannot be opened. */
    virtual OSErr OpenFile(bool readOnlyB);
    virtual void CloseFile();
    /** Reads the eight common keys; ends at the first failure. Afterwards nothing counts as changed. */
    virtual OSErr ReadTags();
    /** Does nothing unless something changed. Opens the file, writes the nine common keys up to the first failure, and
        closes it. After success nothing counts as changed. */
    virtual OSErr WriteTags();

protected:
    /** One key; noErr when the file has none of it. */
    virtual OSErr ReadTag(MetaKey key) = 0;
    virtual OSErr WriteTag(MetaKey key) = 0;
    /** Null while closed. */
    [[nodiscard]] std::FILE* Stream() const noexcept { return i_stream.get(); }

private:
    struct Closer {
        void operator()(std::FILE* streamP) const noexcept { std::fclose(streamP); }
    };
    CFileRef i_file;
    std::unique_ptr<std::FILE, Closer> i_stream;
};
