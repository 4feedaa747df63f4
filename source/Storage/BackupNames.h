#pragma once
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/** What of a library's folder goes into its copies, and under which names it stands there. Names in a zip are UTF-8
    with "/" between their parts; a name on a disc is any bytes. One that a zip cannot say is written "~bytes/", then
    the name with "%" and two hexadecimal digits for all but letters, digits and " ._-/". No file of a copy begins with
    "~", so that the two cannot be taken for each other, and other programs still unpack the zip.
    Threads  any. */

/** "Songs.vlb" and every property list, wherever they lie; nothing below a name that begins with "~". */
[[nodiscard]] bool IsLibraryFile(const std::filesystem::path& fromRoot);
[[nodiscard]] std::string BackupMemberName(const std::filesystem::path& fromRoot);
/** The path below the library root, byte for byte. Nothing for a name that is no library file, or would lie outside. */
[[nodiscard]] std::optional<std::filesystem::path> PathOfBackupMember(std::string_view name);
