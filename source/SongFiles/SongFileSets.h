#pragma once
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "Core/CLog.h"
#include "Files/CFileRef.h"
#include "Library/SongFileFacts.h"
#include "Platform/OSErr.h"

/** The files of one song, as they were found on the disc: a pair, a zip, a video, or sound alone. */
struct SongFileSet {
    CFileRef audio, video, zip;
    std::string base;   // the name that they share
    SongFileFacts facts{};

    friend bool operator==(const SongFileSet& a, const SongFileSet& b) {
        return a.audio.GetPath() == b.audio.GetPath() && a.video.GetPath() == b.video.GetPath() &&
               a.zip.GetPath() == b.zip.GetPath();
    }
};

struct RefusedFile {
    std::filesystem::path path;
    OSErr err = noErr;
    enum class Why { kErr, kNoSong, kNoSound, kMidi } why = Why::kErr;   // kNoSound: of graphics, which are there

    /** For people, without the file's name. */
    [[nodiscard]] std::string Reason() const;
};

/** What is a song. */
struct SongFileRules {
    bool requireAudioB = true;   // graphics without sound are refused
    bool midiB = false;          // files of notes are taken
};

/** Turns files and folders, in whatever mixture they were chosen, into songs. The halves of a pair find each other,
    also when only one was chosen; what is no part of a song is passed over in a folder, and refused when it was chosen
    itself.
    Threads  a worker: reads folders and the directories of zips. */
struct SongFileSets {
    std::vector<SongFileSet> sets;   // in the order of the paths, folders by name; no two alike
    std::vector<RefusedFile> refused;

    /** `cancelled` is asked between files. */
    [[nodiscard]] static SongFileSets Gather(std::span<const std::filesystem::path> paths, const SongFileRules& rules,
                                             const std::function<bool()>& cancelled);
};
