#include "Core/FaultText.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <span>
#include <string_view>

#include "Core/CLog.h"
#include "Core/Localize.h"
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

constexpr const char* kCopyAgain = N_("Copy it again from where it came, or try it in another program.");

struct FaultRow {
    OSErr err;
    const char *wrongZ, *adviceZ;
};

/** What a status means for a thing of one kind, where that is more than it means for all. "%1" stands for the form that
    the file's name promises. */
struct KindRow {
    FaultOf about;
    FaultRow row;
};
constexpr KindRow kOfKinds[] = {
    {FaultOf::kSound, {paramErr, N_("The file is damaged, or it is no %1."), kCopyAgain}},
    {FaultOf::kSound, {eofErr, N_("The file is empty or cut short."), kCopyAgain}},
    {FaultOf::kMovie,
     {paramErr, N_("The file is damaged, or it is no movie of a form that can be played."), kCopyAgain}},
    {FaultOf::kMovie, {eofErr, N_("The file is empty or cut short."), kCopyAgain}},
    {FaultOf::kGraphics,
     {paramErr, N_("It is no file of CD+G graphics."), N_("Choose a file whose name ends in “.cdg”.")}},
    {FaultOf::kGraphics, {eofErr, N_("The file is empty: there are no graphics in it."), kCopyAgain}},
    {FaultOf::kPicture,
     {paramErr, N_("The file is damaged, or it is no picture of a form that can be shown."), kCopyAgain}},
    {FaultOf::kZip, {paramErr, N_("The file is damaged, or it is no zip that can be unpacked here."), kCopyAgain}},
    {FaultOf::kZip, {eofErr, N_("The zip is cut short."), kCopyAgain}},
    {FaultOf::kZip, {ioErr, N_("The zip is damaged, or its disc cannot be read."), kCopyAgain}},
    {FaultOf::kZip, {permErr, N_("The zip is encrypted."), N_("Unpack it with its password, and add what was in it.")}},
    {FaultOf::kZip,
     {memFullErr, N_("There is more in the zip than can be unpacked."), N_("Unpack it by another program.")}},
    {FaultOf::kZip,
     {fnfErr, N_("File Not Found: the zip is not there, or there is no song in it."),
      N_("Connect the disc that it lies on, or look into it with another program.")}},
    {FaultOf::kFolder,
     {fnfErr, N_("The folder is not there."), N_("Connect the disc that it lies on, or choose another folder.")}},
    {FaultOf::kFolder, {paramErr, N_("It is no folder."), N_("Choose a folder.")}},
    {FaultOf::kFolder,
     {afpAccessDenied, N_("Permission denied."),
      N_("Allow this user to read and write the folder, or choose another one.")}},
    {FaultOf::kSoundOutput,
     {fnfErr, N_("The sound output is not there."), N_("Plug it in and switch it on, or choose another output.")}},
    {FaultOf::kSoundOutput,
     {ioErr, N_("The sound output cannot be opened."),
      N_("Another program may use it: close that one, or choose another output.")}},
    {FaultOf::kSoundOutput, {paramErr, N_("The sound output does not take this sound."), N_("Choose another output.")}},
    {FaultOf::kStep, {fnfErr, N_("File Not Found."), N_("A disc may be away: connect it, then try again.")}},
    {FaultOf::kStep, {paramErr, N_("What was given cannot be used here."), N_("The log tells more.")}},
};

/** For every thing. The first words of a system's fault are the system's own. */
constexpr FaultRow kOfAll[] = {
    {controlErr, N_("The device refused a command."), N_("Switch it off and on, then try again.")},
    {dskFulErr, N_("Disk is full."), N_("Make room on it, or choose another disc.")},
    {nsvErr, N_("No such volume: the disc or device has gone."), N_("Connect it again, then try again.")},
    {ioErr, N_("Input/output error: the disc does not give or take these bytes."),
     N_("Check the disc and its cable, and keep a copy of what can still be read.")},
    {bdNamErr, N_("The name is empty, too long, or has signs that no file may have."), N_("Give it another name.")},
    {fnOpnErr, N_("The file is not open."), N_("Try again.")},
    {eofErr, N_("The file is empty or cut short."), kCopyAgain},
    {memFullErr, N_("Cannot allocate memory: there is too little for it."),
     N_("Close other programs, or use a smaller file.")},
    {fnfErr, N_("File Not Found."), N_("Connect the disc that it lies on, or look where it was moved to.")},
    {fLckdErr, N_("The file is locked."), N_("Unlock it, then try again.")},
    {dupFNErr, N_("File exists: there is one of this name already."), N_("Give one of the two another name.")},
    {opWrErr, N_("Device or resource busy: another program has it open."), N_("Close it there, then try again.")},
    {paramErr, N_("It is damaged, or of another kind than is wanted here."), kCopyAgain},
    {rfNumErr, N_("The file was closed meanwhile."), N_("Try again.")},
    {permErr, N_("Permission denied."), N_("Allow this user to read it.")},
    {errFSMissingName, N_("The name is empty."), N_("Give it a name.")},
    {permissionsError, N_("Operation not permitted: the file or its disc is locked or for reading only."),
     N_("Unlock it, or choose another place.")},
    {scriptErr, N_("Another program that was to help has failed."), N_("The log tells more.")},
    {notThreadSafeErr, N_("A part of the system cannot be used here."), N_("Update the system.")},
    {afpAccessDenied, N_("Permission denied."),
     N_("Allow this user to read it, and to write where something is saved.")},
    {afpDirNotEmpty, N_("Directory not empty."), N_("Look what else is in it.")},
    {invalidMidiErr, N_("It is no MIDI file, or a damaged one."), kCopyAgain},
    {noPathMappingErr, N_("Too many levels of symbolic links: the way leads in a circle."),
     N_("Mend the link, or choose the file itself.")},
    {networkTimeoutErr, N_("Connection timed out: the network does not answer."),
     N_("Check the network, then try again.")},
    {static_cast<OSErr>(-30394), N_("The other side gave no data."), N_("Check the network, then try again later.")},
    {abortErr, N_("It was cancelled."), ""},
    {userCanceledErr, N_("It was cancelled."), ""},
    {alreadyReportedErr, N_("It was told already."), ""},
    {queueNotDoneErr, N_("It is still under way."), ""},
    {semaphoreGoneErr, N_("It was ended before it was done."), ""},
    {semaphoreTimedOutErr, N_("It took too long."), N_("Try again.")},
};

/** What can be done about a number of the system that has no status of its own; its words are the system's. */
struct ErrnoRow {
    int errnoL;
    const char* adviceZ;
};
constexpr ErrnoRow kOfErrnos[] = {
    {ENAMETOOLONG, N_("Give it a shorter name, or put it into a folder with a shorter path.")},
    {EROFS, N_("The disc is for reading only: choose another one, or mount it for writing.")},
    {EFBIG, N_("The disc cannot hold files of this size: choose another one.")},
    {EMFILE, N_("Close windows and other programs, then try again.")},
    {ENFILE, N_("Close other programs, then try again.")},
    {EISDIR, N_("A folder stands where a file was expected.")},
    {EINVAL, N_("The disc or the device does not do this: choose another one.")},
    {EOVERFLOW, N_("The file is too large for this: choose a smaller one.")},
    {EXDEV, N_("The two places lie on different discs.")},
    {ENOTSUP, N_("The disc or the device does not do this: choose another one.")},
    {ENOEXEC, N_("The program is damaged, or made for another machine.")},
    {ETIMEDOUT, N_("Check the network and the disc, then try again.")},
    {EHOSTDOWN, N_("Check the network, then try again.")},
    {EHOSTUNREACH, N_("Check the network, then try again.")},
    {ENETUNREACH, N_("Check the network, then try again.")},
    {ECONNREFUSED, N_("Check that the other program is running, then try again.")},
    {ENOMEDIUM, N_("Put the disc in, then try again.")},
    {EADDRINUSE, N_("Another program uses it: close that one, then try again.")},
};

std::string Joined(const char* wrongZ, const char* adviceZ, const std::string& form) {
    const std::string advice = Localize(adviceZ);
    return Localize(wrongZ, {form}) + (advice.empty() ? advice : ' ' + advice);
}

std::string FormOf(const std::string& extension) {
    if (extension.empty()) return Localize("sound file");
    std::string form(extension);
    std::ranges::transform(form, form.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return Localize("%1 file", {form}, "a form of files: MP3");
}

std::string ErrnoWords(int errnoL) {
    const auto* it = std::ranges::find(kOfErrnos, errnoL, &ErrnoRow::errnoL);
    return ErrorText(errnoL) + ". " +
           Localize(it == std::ranges::end(kOfErrnos) ? N_("The log tells more.") : it->adviceZ);
}

std::string WithNumber(const std::string& words, OSErr err) { return words + " (" + std::to_string(Number(err)) + ")"; }

}   // namespace

FaultOf FaultOfFile(const std::filesystem::path& file) {
    const std::string extension = SmallExtension(file);
    const auto* it = std::ranges::find(kEndings, extension, &Ending::extension);
    return it == std::ranges::end(kEndings) ? FaultOf::kFile : it->about;
}

std::string FaultWords(OSErr err, FaultOf about, const std::string& extension) {
    if (!Failed(err)) return Localize("Success.");
    for (const KindRow& kind : kOfKinds)
        if (kind.about == about && kind.row.err == err)
            return Joined(kind.row.wrongZ, kind.row.adviceZ, FormOf(extension));
    if (const auto* it = std::ranges::find(kOfAll, err, &FaultRow::err); it != std::ranges::end(kOfAll))
        return Joined(it->wrongZ, it->adviceZ, {});
    if (Number(err) > 0) return ErrnoWords(Number(err));
    return Localize("Something failed that has no name here. The log tells more.");
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
