#pragma once
#include <memory>

#include "Audio/CSpooler.h"
#include "Audio/SongSource.h"
#include "Graphics/CGraphicsSong.h"
#include "Movies/CMoviePictures.h"
#include "Movies/MovieFrame.h"
#include "Movies/MovieLead.h"

class CMoviePlay;

/** The counts of one opening. */
struct MovieCounts {
    std::uint64_t decodedL = 0;
    std::uint64_t shownL = 0;
    std::uint64_t droppedL = 0;   // had their time and were not shown
    std::uint64_t damagedL = 0;   // packets that could not be decoded
};

/** The picture of a video song: a movie that is decoded on a thread of its own and led by the sound, or by a clock of
    its own when nobody leads it. A picture that is late is dropped, the sound never waits. As a spool it opens, closes,
    seeks and has a total; there is nothing to read from it.
    Units    of the spool: 4 bytes of sub-code, 6 of them 1/300 s, so that positions are those of a disc's graphics.
             Times are seconds of the song (0: where its sound begins).
    Threads  Open and Close as every spool (they read the file); what CGraphicsMovie has, and the settings: main. Facts
             and Result: any, after the opening.
    Owner    Ref.
    Errors   Open: paramErr for a file without a picture that plays. Pictures that end early leave a status (Result) and
             the last one standing. */
class CAS_QuickTimeVideo final : public CSpooler, public CGraphicsMovie {
public:
    explicit CAS_QuickTimeVideo(SongBytes bytes);
    ~CAS_QuickTimeVideo() override;

    OSErr GetEOF(std::uint64_t& sizeL) override;

    // Main thread.
    /** Who tells how far the sound is heard; none: the movie's own clock, which stands at 0 until SetPaused(false). */
    void SetLeader(MovieLeader leader) { i_leader = std::move(leader); }
    /** Of the own clock. */
    void SetPaused(bool pausedB) noexcept { i_pausedB = pausedB; }
    void SetTempo(double tempo) noexcept { i_tempo = tempo; }
    /** The picture of `seconds` comes as soon as it can be had, while what is shown stays; on the way the key picture
        before it may be seen. The sound is the leader's to seek; when it jumps without this call the picture follows. */
    void SeekTo(double seconds);
    /** In milliseconds; positive shows the picture later. */
    void SetPictureDelay(long milliseconds);
    /** The size of the largest place that shows the picture, in pixels of its screen: no larger pictures are made. */
    void SetNeededSize(int width, int height);

    [[nodiscard]] const CPixels* Picture() const override { return i_shownP ? &i_shownP->pixels : nullptr; }
    [[nodiscard]] Rect Frame() const override;
    /** The pictures were all shown, and the sound, if it leads, was heard; it does not wait long for a picture then. */
    [[nodiscard]] bool IsEnded() const override;
    bool Idle() override { return Show(); }
    /** Chooses the picture of now; true when another one is shown than before. */
    [[nodiscard]] bool Show();
    /** Seconds until it is worth calling Show again. */
    [[nodiscard]] double NextShowIn() const;
    /** The picture of the last SeekTo is not there yet. */
    [[nodiscard]] bool IsSeeking() const;
    /** When the picture that is shown begins; below 0 without one. */
    [[nodiscard]] double ShownTime() const noexcept { return i_shownP ? i_shownP->timeT : -1; }
    /** Of the song: the leader's smooth time, or the own clock's. */
    [[nodiscard]] double CurTime() const;
    [[nodiscard]] MovieCounts Counts() const;

    [[nodiscard]] MovieFacts Facts() const;
    /** Of the picture, in 300ths; 0 when the file does not tell. */
    [[nodiscard]] long Length300() const;
    OSErr Result() const;

protected:
    OSErr Open_i(bool writeB, std::uint64_t& sizeL) override;
    OSErr Close_i(bool writeB) override;
    OSErr Read_i(std::span<std::byte> buffer, std::size_t& gotL) override;
    std::uint64_t Available_i() override { return 0; }
    OSErr Seek_i(std::uint64_t positionL) override;
    void Abort_i() override;

private:
    OSErr Begin(std::shared_ptr<CMoviePlay>& playP);
    double Follow(CMoviePlay& play);
    void FollowJumps(CMoviePlay& play, double pictureT);

    const SongBytes i_bytes;
    CMutexT<std::shared_ptr<CMoviePlay>> i_playP;   // set while it is open

    // Main thread.
    MovieLeader i_leader;
    MoviePicturePtr i_shownP;
    PictureSize i_needed;
    long i_delayL = 0;
    double i_tempo = 1;
    bool i_pausedB = true, i_leadEndedB = true;
    std::uint64_t i_shownL = 0, i_droppedL = 0;
};

/** The picture of a song's file: a video, or the video in a zip, which is read where it lies.
    Threads  any but the main one: a zip's directory is read here.
    Errors   fnfErr: a zip without a video; those of CZipArchive. */
OSErr MakeSongMovie(const CFileRef& file, Ref<CAS_QuickTimeVideo>& movieP);
