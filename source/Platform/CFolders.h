#pragma once
#include <filesystem>
#include <string_view>

/** The places of this user, after the XDG base directory rules. They are named, not made.
    With a root, from SetRoot or else from the environment variable VOPLA_ROOT, all of them lie inside it:
    ROOT/config, data, cache, state, run, Music, tmp. Relative values are made absolute.
    Threads  any; SetRoot only before the others start.
    Source   XDG Base Directory Specification 0.8, user-dirs.dirs of xdg-user-dirs. */
class CFolders {
public:
    using Path = std::filesystem::path;

    /** The `--root` option; empty: the environment decides again. */
    static void SetRoot(const Path& root);
    /** The root in use; empty when the places are the user's own. */
    [[nodiscard]] static Path Root();

    [[nodiscard]] static Path Home();
    [[nodiscard]] static Path Config();
    [[nodiscard]] static Path Data();
    [[nodiscard]] static Path Cache();
    [[nodiscard]] static Path State();
    /** For sockets; of this user alone. Without XDG_RUNTIME_DIR a folder of the user's number in the temporary folder. */
    [[nodiscard]] static Path Runtime();
    [[nodiscard]] static Path Music();
    [[nodiscard]] static Path Temp();
    /** The trash of the volume that holds the home; other volumes have their own at the top. */
    [[nodiscard]] static Path HomeTrash();
    /** The folder that the running program lies in; empty when the system does not tell. */
    [[nodiscard]] static Path Program();
};

/** The folder that a text in the form of user-dirs.dirs gives for `key`, such as "XDG_MUSIC_DIR"; empty for none. */
[[nodiscard]] std::filesystem::path ReadUserFolder(std::string_view text, std::string_view key,
                                                   const std::filesystem::path& home);
