#pragma once
#include "Audio/CSpooler.h"
#include "Core/CFileRef.h"

/** The sound of a song's file as a spool of 16-bit stereo: an audio file, the sound of a video, or the sound in a zip,
   which is read where it lies. Threads  any but the main one: a zip's directory is read here. The spool opens what it
   reads when it is opened itself. Errors   fnfErr: a zip without any sound in it; those of CZipArchive. */
OSErr MakeSongSource(const CFileRef& file, Ref<CSpooler>& sourceP);
