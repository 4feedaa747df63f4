#pragma once
#include <functional>
#include <memory>

#include "Audio/CSpooler.h"
#include "Files/CFileRef.h"
#include "Media/CMediaAudio.h"

/** The sound of a compressed audio file or a movie, decoded as it is read; can be sought to the sample.
    Units    16-bit samples; the total is the song's length where the library knows one, else what the file says, and
             exact once the end was reached.
    Owner    Ref; owns the source of the bytes.
    Errors   as CMediaAudio. A reading that fails after the opening is told to the user. */
class CAS_QuickTimeAudioReader : public CSpooler {
public:
    /** Makes the bytes when the spool is opened, on the thread that opens it. */
    using SourceMaker = std::function<OSErr(std::unique_ptr<CByteSource>& sourceP)>;

    /** `song300` is the length in 300ths of a second, 0 when it is not known. */
    explicit CAS_QuickTimeAudioReader(const CFileRef& file, std::uint64_t song300 = 0);
    /** `extension`, without its dot, is a hint for the decoder. */
    CAS_QuickTimeAudioReader(SourceMaker makeSource, std::string extension, std::uint64_t song300 = 0);

    /** One thread at a time. Opens the file, where the library knows no length; an abort ends that. */
    OSErr GetEOF(std::uint64_t& sizeL) override;

protected:
    OSErr Open_i(bool writeB, std::uint64_t& sizeL) override;
    OSErr Close_i(bool writeB) override;
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override;
    std::uint64_t Available_i() override;
    OSErr Seek_i(std::uint64_t positionL) override;
    void Abort_i() override;

private:
    struct Movie {
        std::unique_ptr<CByteSource> sourceP;   // outlives the decoder
        CMediaAudio audio;
    };
    OSErr Begin(Movie& movie) const;
    [[nodiscard]] std::uint64_t Total(const CMediaAudio& audio) const;

    const SourceMaker i_makeSource;
    const std::string i_extension;
    const std::uint64_t i_songUnitsL;           // 0: not known
    CMutexT<std::shared_ptr<Movie>> i_movieP;   // for Abort_i; else used under the read lock
    CMutexT<std::shared_ptr<Movie>> i_askedP;   // while GetEOF looks at one of its own
    std::vector<std::int16_t> i_samples;        // these under the read lock
    bool i_endB = false;
};
