#include "Core/FaultText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <span>
#include <string_view>

#include "Core/CLog.h"
#include "Core/SmallExtension.h"

namespace {

struct Ending {
    std::string_view extension;
    FaultOf about;
};
constexpr Ending kEndings[] = {
    {"zip", FaultOf::kZip},     {"cdg", FaultOf::kGraphics}, {"mp3", FaultOf::kSound},    {"m4a", FaultOf::kSound},
    {"aac", FaultOf::kSound},   {"wav", FaultOf::kSound},    {"flac", FaultOf::kSound},   {"ogg", FaultOf::kSound},
    {"oga", FaultOf::kSound},   {"opus", FaultOf::kSound},   {"wma", FaultOf::kSound},    {"aif", FaultOf::kSound},
    {"aiff", FaultOf::kSound},  {"ac3", FaultOf::kSound},    {"mp2", FaultOf::kSound},    {"mp4", FaultOf::kMovie},
    {"m4v", FaultOf::kMovie},   {"mov", FaultOf::kMovie},    {"mkv", FaultOf::kMovie},    {"webm", FaultOf::kMovie},
    {"avi", FaultOf::kMovie},   {"mpg", FaultOf::kMovie},    {"mpeg", FaultOf::kMovie},   {"vob", FaultOf::kMovie},
    {"wmv", FaultOf::kMovie},   {"flv", FaultOf::kMovie},    {"ts", FaultOf::kMovie},     {"png", FaultOf::kPicture},
    {"jpg", FaultOf::kPicture}, {"jpeg", FaultOf::kPicture}, {"webp", FaultOf::kPicture}, {"bmp", FaultOf::kPicture},
    {"tif", FaultOf::kPicture}, {"tiff", FaultOf::kPicture}, {"gif", FaultOf::kPicture},
};

constexpr std::string_view kCopyAgain = "Copy it again from where it came, or try it in another program.";

struct FaultRow {
    OSErr err;
    std::string_view wrong, advice;
};

/** What a status means for a thing of one kind, where that is more than it means for all. "%" stands for the form that the
    file's name promises. */
struct KindRow {
    FaultOf about;
    FaultRow row;
};
constexpr KindRow kOfKinds[] = {
    {FaultOf::kSound, {paramErr, "The file is damaged, or it is no %.", kCopyAgain}},
    {FaultOf::kSound, {eofErr, "The file is empty or cut short.", kCopyAgain}},
    {FaultOf::kMovie, {paramErr, "The file is damaged, or it is no movie of a form that can be played.", kCopyAgain}},
    {FaultOf::kMovie, {eofErr, "The file is empty or cut short.", kCopyAgain}},
    {FaultOf::kGraphics, {paramErr, "It is no file of CD+G graphics.", "Choose a file whose name ends in “.cdg”."}},
    {FaultOf::kGraphics, {eofErr, "The file is empty: there are no graphics in it.", kCopyAgain}},
    {FaultOf::kPicture,
     {paramErr, "The file is damaged, or it is no picture of a form that can be shown.", kCopyAgain}},
    {FaultOf::kZip, {paramErr, "The file is damaged, or it is no zip that can be unpacked here.", kCopyAgain}},
    {FaultOf::kZip, {eofErr, "The zip is cut short.", kCopyAgain}},
    {FaultOf::kZip, {ioErr, "The zip is damaged, or its disc cannot be read.", kCopyAgain}},
    {FaultOf::kZip, {permErr, "The zip is encrypted.", "Unpack it with its password, and add what was in it."}},
    {FaultOf::kZip, {memFullErr, "There is more in the zip than can be unpacked.", "Unpack it by another program."}},
    {FaultOf::kZip,
     {fnfErr, "File Not Found: the zip is not there, or there is no song in it.",
      "Connect the disc that it lies on, or look into it with another program."}},
    {FaultOf::kFolder,
     {fnfErr, "The folder is not there.", "Connect the disc that it lies on, or choose another folder."}},
    {FaultOf::kFolder, {paramErr, "It is no folder.", "Choose a folder."}},
    {FaultOf::kFolder,
     {afpAccessDenied, "Permission denied.", "Allow this user to read and write the folder, or choose another one."}},
    {FaultOf::kSoundOutput,
     {fnfErr, "The sound output is not there.", "Plug it in and switch it on, or choose another output."}},
    {FaultOf::kSoundOutput,
     {ioErr, "The sound output cannot be opened.",
      "Another program may use it: close that one, or choose another output."}},
    {FaultOf::kSoundOutput, {paramErr, "The sound output does not take this sound.", "Choose another output."}},
    {FaultOf::kStep, {fnfErr, "File Not Found.", "A disc may be away: connect it, then try again."}},
    {FaultOf::kStep, {paramErr, "What was given cannot be used here.", "The log tells more."}},
};

/** For every thing. The first words of a system's fault are the system's own. */
constexpr FaultRow kOfAll[] = {
    {controlErr, "The device refused a command.", "Switch it off and on, then try again."},
    {dskFulErr, "Disk is full.", "Make room on it, or choose another disc."},
    {nsvErr, "No such volume: the disc or device has gone.", "Connect it again, then try again."},
    {ioErr, "Input/output error: the disc does not give or take these bytes.",
     "Check the disc and its cable, and keep a copy of what can still be read."},
    {bdNamErr, "The name is empty, too long, or has signs that no file may have.", "Give it another name."},
    {fnOpnErr, "The file is not open.", "Try again."},
    {eofErr, "The file is empty or cut short.", kCopyAgain},
    {memFullErr, "Cannot allocate memory: there is too little for it.", "Close other programs, or use a smaller file."},
    {fnfErr, "File Not Found.", "Connect the disc that it lies on, or look where it was moved to."},
    {fLckdErr, "The file is locked.", "Unlock it, then try again."},
    {dupFNErr, "File exists: there is one of this name already.", "Give one of the two another name."},
    {opWrErr, "Device or resource busy: another program has it open.", "Close it there, then try again."},
    {paramErr, "It is damaged, or of another kind than is wanted here.", kCopyAgain},
    {rfNumErr, "The file was closed meanwhile.", "Try again."},
    {permErr, "Permission denied.", "Allow this user to read it."},
    {errFSMissingName, "The name is empty.", "Give it a name."},
    {permissionsError, "Operation not permitted: the file or its disc is locked or for reading only.",
     "Unlock it, or choose another place."},
    {scriptErr, "Another program that was to help has failed.", "The log tells more."},
    {notThreadSafeErr, "A part of the system cannot be used here.", "Update the system."},
    {afpAccessDenied, "Permission denied.", "Allow this user to read it, and to write where something is saved."},
    {afpDirNotEmpty, "Directory not empty.", "Look what else is in it."},
    {invalidMidiErr, "It is no MIDI file, or a damaged one.", kCopyAgain},
    {noPathMappingErr, "Too many levels of symbolic links: the way leads in a circle.",
     "Mend the link, or choose the file itself."},
    {networkTimeoutErr, "Connection timed out: the network does not answer.", "Check the network, then try again."},
    {static_cast<OSErr>(-30394), "The other side gave no data.", "Check the network, then try again later."},
    {abortErr, "It was cancelled.", {}},
    {userCanceledErr, "It was cancelled.", {}},
    {alreadyReportedErr, "It was told already.", {}},
    {queueNotDoneErr, "It is still under way.", {}},
    {semaphoreGoneErr, "It was ended before it was done.", {}},
    {semaphoreTimedOutErr, "It took too long.", "Try again."},
};

/** What can be done about a number of the system that has no status of its own; its words are the system's. */
struct ErrnoRow {
    int errnoL;
    std::string_view advice;
};
constexpr ErrnoRow kOfErrnos[] = {
    {ENAMETOOLONG, "Give it a shorter name, or put it into a folder with a shorter path."},
    {EROFS, "The disc is for reading only: choose another one, or mount it for writing."},
    {EFBIG, "The disc cannot hold files of this size: choose another one."},
    {EMFILE, "Close windows and other programs, then try again."},
    {ENFILE, "Close other programs, then try again."},
    {EISDIR, "A folder stands where a file was expected."},
    {EINVAL, "The disc or the device does not do this: choose another one."},
    {EOVERFLOW, "The file is too large for this: choose a smaller one."},
    {EXDEV, "The two places lie on different discs."},
    {ENOTSUP, "The disc or the device does not do this: choose another one."},
    {ENOEXEC, "The program is damaged, or made for another machine."},
    {ETIMEDOUT, "Check the network and the disc, then try again."},
    {EHOSTDOWN, "Check the network, then try again."},
    {EHOSTUNREACH, "Check the network, then try again."},
    {ENETUNREACH, "Check the network, then try again."},
    {ECONNREFUSED, "Check that the other program is running, then try again."},
    {ENOMEDIUM, "Put the disc in, then try again."},
    {EADDRINUSE, "Another program uses it: close that one, then try again."},
};

std::string Joined(std::string_view wrong, std::string_view advice, const std::string& form) {
    std::string text(wrong);
    if (const std::size_t at = text.find('%'); at != std::string::npos) text.replace(at, 1, form);
    if (!advice.empty()) text += ' ' + std::string(advice);
    return text;
}

std::string FormOf(const std::string& extension) {
    if (extension.empty()) return "sound file";
    std::string form(extension);
    std::ranges::transform(form, form.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return form + " file";
}

std::string ErrnoWords(int errnoL) {
    const std::string text = ErrorText(errnoL) + ".";
    const auto* it = std::ranges::find(kOfErrnos, errnoL, &ErrnoRow::errnoL);
    return Joined(text, it == std::ranges::end(kOfErrnos) ? "The log tells more." : it->advice, {});
}

std::string WithNumber(const std::string& words, OSErr err) { return words + " (" + std::to_string(Number(err)) + ")"; }

}   // namespace

FaultOf FaultOfFile(const std::filesystem::path& file) {
    const std::string extension = SmallExtension(file);
    const auto* it = std::ranges::find(kEndings, extension, &Ending::extension);
    return it == std::ranges::end(kEndings) ? FaultOf::kFile : it->about;
}

std::string FaultWords(OSErr err, FaultOf about, const std::string& extension) {
    if (!Failed(err)) return "Success.";
    for (const KindRow& kind : kOfKinds)
        if (kind.about == about && kind.row.err == err)
            return Joined(kind.row.wrong, kind.row.advice, FormOf(extension));
    if (const auto* it = std::ranges::find(kOfAll, err, &FaultRow::err); it != std::ranges::end(kOfAll))
        return Joined(it->wrong, it->advice, {});
    if (Number(err) > 0) return ErrnoWords(Number(err));
    return "Something failed that has no name here. The log tells more.";
}

std::string FaultWords(OSErr err, const std::filesystem::path& file) {
    return FaultWords(err, FaultOfFile(file), SmallExtension(file));
}

std::string FaultText(OSErr err, const std::filesystem::path& file) {
    const std::string words = FaultWords(err, file);
    return WithNumber(file.empty() ? words : "“" + file.string() + "”: " + words, err);
}

std::string FaultText(OSErr err, FaultOf about, const std::string& name) {
    const std::string words = FaultWords(err, about);
    return WithNumber(name.empty() ? words : "“" + name + "”: " + words, err);
}
