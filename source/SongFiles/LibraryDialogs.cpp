#include "SongFiles/LibraryDialogs.h"

#include <iterator>

namespace {

constexpr struct {
    const char *titleZ, *textZ, *buttonZ;
} kDialogs[] = {
    {"Remove from Library",
     "This will remove all references from all playlists!  It will leave files on your disk untouched.  Are you sure "
     "you "
     "want to remove all references?",
     "Remove"},
    {"Remove Duplicates", "This will only remove (presumeably duplicate) playlist items from the Library playlist.",
     "Remove"},
    {"Trash Original Files",
     "Warning!! This will move original files on your hard disk to the trash, as well as remove all references from "
     "all "
     "playlists!  Are you sure you want to trash the selected files?",
     "Trash"},
    {"Delete Tracks", "A song you are trying to delete is currently playing.  Are you sure you want to delete it?",
     "Delete"},
    {"Delete Playlist", "Are you sure you want to permanantly delete playlist “%s”?  You can not undo this action.",
     "Delete"},
    {"Paste",
     "Pasting over meta data is dangerous, you can destroy data and there is no undo.  Are you sure you want to "
     "coninue?",
     "Paste"},
    {"Reveal", "Are you sure you want reveal %d songs in the Finder?", "Reveal"},
    {"Rename List",
     "There is a list “%s” already.  Two lists of one name are hard to tell apart.  Do you want to use the name twice?",
     "Use It Twice"},
    {"Delete Tracks",
     "These are the last songs of “%s”: the list will be empty.  Are you sure you want to delete them?", "Delete"},
};

}   // namespace

Question LibraryQuestion(LibraryDialog dialog, const std::string& detail) {
    const auto& row = kDialogs[static_cast<std::size_t>(dialog) % std::size(kDialogs)];
    Question question;
    question.title = row.titleZ;
    question.text = row.textZ;
    if (const std::size_t at = question.text.find('%'); at != std::string::npos)
        question.text.replace(at, 2, detail);
    else if (!detail.empty())
        question.text += "\n\n" + detail;
    question.buttons = {row.buttonZ, "Cancel"};
    question.defaultIndex = 1;
    question.safeIndex = 1;
    return question;
}
