#pragma once
#include <filesystem>
#include <string>

#include "Platform/OSErr.h"

/** What a failure is about: the same status means another thing for a zip than for a sound output. */
enum class FaultOf { kStep, kFile, kFolder, kSound, kGraphics, kMovie, kPicture, kZip, kSoundOutput };

/** What a file is by the ending of its name; kFile for one that tells nothing. */
[[nodiscard]] FaultOf FaultOfFile(const std::filesystem::path& file);

/** What is wrong and what can be done, in plain sentences without the name of the thing and without the number:
    "Permission denied. Allow this user to read it." The words that the system itself has for a fault come first.
    `what` is the ending of a sound file's name, which is told when it is none; may be empty.
    Threads  any. */
[[nodiscard]] std::string FaultWords(OSErr err, FaultOf about, const std::string& extension = {});
/** The same of a file, by its name. */
[[nodiscard]] std::string FaultWords(OSErr err, const std::filesystem::path& file);

/** One line for an alert or a notice, below the words that tell which song or task failed:
    "“/music/a.mp3”: The file is damaged, or it is no MP3. (-50)". Without a path only what is known is told. */
[[nodiscard]] std::string FaultText(OSErr err, const std::filesystem::path& file);
[[nodiscard]] std::string FaultText(OSErr err, FaultOf about, const std::string& name);
