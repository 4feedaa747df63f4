#pragma once
#include <functional>
#include <memory>
#include <string>

#include "Audio/CSpooler.h"
#include "Files/CFileRef.h"
#include "Media/CMediaFormat.h"

/** Where the media of a song lie. */
struct SongBytes {
    /** Opens them, on the thread that will read them. */
    std::function<OSErr(std::unique_ptr<CByteSource>& bytesP)> make;
    std::string extension;   // in lower case, without its dot: a hint for the demuxer
};

/** By its name, in whatever case. */
[[nodiscard]] bool IsZipFile(const CFileRef& file);
/** Of the sound or the picture of `file`: itself, or a member of a zip, which is read where it lies.
    Threads  any but the main one: a zip's directory is read here.
    Errors   fnfErr: a zip without any; those of CZipArchive. */
OSErr FindSongBytes(const CFileRef& file, MediaKind kind, SongBytes& found);

/** The sound of a song's file as a spool of 16-bit stereo: an audio file, the sound of a video, or the sound in a zip,
    which is read where it lies.
    Threads  any but the main one: a zip's directory is read here. The spool opens what it reads when it is opened
             itself.
    Errors   fnfErr: a zip without any sound in it; those of CZipArchive. */
OSErr MakeSongSource(const CFileRef& file, Ref<CSpooler>& sourceP);
