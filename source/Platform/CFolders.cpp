#include "Platform/CFolders.h"

#include <pwd.h>
#include <unistd.h>
#include <cstdlib>
#include <span>
#include <string>

#include "Platform/CFileCalls.h"

namespace {

using Path = std::filesystem::path;

Path& SetRootPath() {
    static Path s_root;
    return s_root;
}

Path Environment(const char* nameZ) {
    const char* const valueZ = std::getenv(nameZ);
    return valueZ == nullptr ? Path{} : Path{valueZ};
}

Path Absolute(const Path& path) {
    std::error_code ignored;   // a lost working folder: the path stays relative, and the first use of it tells
    Path whole = std::filesystem::absolute(path, ignored).lexically_normal();
    return whole.has_filename() ? whole : whole.parent_path();
}

/** A base directory: inside the root, or from its variable, or the default under the home. */
Path Base(const char* rootNameZ, const char* variableZ, const char* defaultZ) {
    if (const Path root = CFolders::Root(); !root.empty()) return root / rootNameZ;
    // The rules: a relative value is to be ignored.
    if (const Path value = Environment(variableZ); value.is_absolute()) return value;
    return CFolders::Home() / defaultZ;
}

constexpr std::size_t kUserDirs_MaxBytes = 64 * 1024;

std::string ReadSmallFile(const Path& file) {
    CFileCalls& calls = CFileCalls::Get();
    int handle = -1;
    if (calls.Open(file, FileAccess::kRead, 0, handle) != 0) return {};
    std::string text(kUserDirs_MaxBytes, '\0');
    std::size_t sizeL = 0, got = 0;
    while (sizeL < text.size()) {
        if (calls.ReadAt(handle, sizeL, std::as_writable_bytes(std::span{text}.subspan(sizeL)), got) != 0) break;
        if (got == 0) break;
        sizeL += got;
    }
    calls.Close(handle);
    text.resize(sizeL);
    return text;
}

}   // namespace

void CFolders::SetRoot(const Path& root) { SetRootPath() = root.empty() ? Path{} : Absolute(root); }

Path CFolders::Root() {
    if (!SetRootPath().empty()) return SetRootPath();
    const Path root = Environment("VOPLA_ROOT");
    return root.empty() ? Path{} : Absolute(root);
}

Path CFolders::Home() {
    if (const Path root = Root(); !root.empty()) return root;
    if (const Path home = Environment("HOME"); home.is_absolute()) return home;
    struct passwd record {};
    struct passwd* foundP = nullptr;
    char buffer[4096];
    if (::getpwuid_r(::geteuid(), &record, buffer, sizeof buffer, &foundP) == 0 && foundP != nullptr)
        return foundP->pw_dir;
    return "/";
}

Path CFolders::Config() { return Base("config", "XDG_CONFIG_HOME", ".config"); }
Path CFolders::Data() { return Base("data", "XDG_DATA_HOME", ".local/share"); }
Path CFolders::Cache() { return Base("cache", "XDG_CACHE_HOME", ".cache"); }
Path CFolders::State() { return Base("state", "XDG_STATE_HOME", ".local/state"); }

Path CFolders::Runtime() {
    if (const Path root = Root(); !root.empty()) return root / "run";
    if (const Path value = Environment("XDG_RUNTIME_DIR"); value.is_absolute()) return value;
    return Temp() / ("vopla-run-" + std::to_string(::geteuid()));
}

Path CFolders::Music() {
    if (const Path root = Root(); !root.empty()) return root / "Music";
    const Path home = Home();
    const Path told = ReadUserFolder(ReadSmallFile(Config() / "user-dirs.dirs"), "XDG_MUSIC_DIR", home);
    return told.empty() ? home / "Music" : told;
}

Path CFolders::Temp() {
    if (const Path root = Root(); !root.empty()) return root / "tmp";
    const Path value = Environment("TMPDIR");
    return value.is_absolute() ? value : Path{"/tmp"};
}

Path CFolders::HomeTrash() { return Data() / "Trash"; }

Path CFolders::Program() {
    Path program;
    return CFileCalls::Get().RealPath("/proc/self/exe", program) == 0 ? program.parent_path() : Path{};
}

Path ReadUserFolder(std::string_view text, std::string_view key, const Path& home) {
    Path found;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(line.size() < text.size() ? line.size() + 1 : line.size());
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (!line.starts_with(key)) continue;
        line.remove_prefix(key.size());
        if (!line.starts_with("=\"")) continue;
        line.remove_prefix(2);
        std::string value;
        bool closedB = false;
        for (std::size_t n = 0; n < line.size() && !closedB; ++n) {
            if (line[n] == '"')
                closedB = true;
            else
                value += line[n] == '\\' && n + 1 < line.size() ? line[++n] : line[n];
        }
        if (!closedB) continue;
        // The format knows two forms: "$HOME/..." and an absolute path. A later line wins, as in a shell.
        if (value == "$HOME" || value == "$HOME/")
            found = home;
        else if (value.starts_with("$HOME/"))
            found = home / value.substr(6);
        else if (value.starts_with('/'))
            found = value;
    }
    return found;
}
