#include "SongFiles/LibraryDialogs.h"

#include "Core/Localize.h"

#include <iterator>

namespace {

constexpr struct {
    const char *titleZ, *textZ, *buttonZ;
} kDialogs[] = {
    {N_("Remove from Library"),
     N_("This will remove all references from all playlists!  It will leave files on your disk untouched.  Are you "
        "sure "
        "you want to remove all references?"),
     N_("Remove")},
    {N_("Remove Duplicates"),
     N_("This will only remove (presumably duplicate) playlist items from the Library playlist."), N_("Remove")},
    {N_("Trash Original Files"),
     N_("Warning!! This will move original files on your hard disk to the trash, as well as remove all references from "
        "all playlists!  Are you sure you want to trash the selected files?"),
     N_("Trash")},
    {N_("Delete Tracks"),
     N_("A song you are trying to delete is currently playing.  Are you sure you want to delete it?"), N_("Delete")},
    {N_("Delete Playlist"),
     N_("Are you sure you want to permanently delete playlist “%1”?  You can not undo this action."), N_("Delete")},
    {N_("Paste"),
     N_("Pasting over meta data is dangerous, you can destroy data and there is no undo.  Are you sure you want to "
        "continue?"),
     N_("Paste")},
    {N_("Reveal"), N_("Are you sure you want to reveal %1 songs in the file manager?"), N_("Reveal")},
    {N_("Rename List"),
     N_("There is a list “%1” already.  Two lists of one name are hard to tell apart.  Do you want to use the name "
        "twice?"),
     N_("Use It Twice")},
    {N_("Delete Tracks"),
     N_("These are the last songs of “%1”: the list will be empty.  Are you sure you want to delete them?"),
     N_("Delete")},
};

}   // namespace

Question LibraryQuestion(LibraryDialog dialog, const std::string& detail) {
    const auto& row = kDialogs[static_cast<std::size_t>(dialog) % std::size(kDialogs)];
    Question question;
    question.title = Localize(row.titleZ);
    question.text = Localize(row.textZ, {detail});
    if (std::string_view(row.textZ).find("%1") == std::string_view::npos && !detail.empty())
        question.text += "\n\n" + detail;
    question.buttons = {Localize(row.buttonZ), Localize("Cancel")};
    question.defaultIndex = 1;
    question.safeIndex = 1;
    return question;
}
