#pragma once
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "Core/AlertHook.h"
#include "Platform/CFileCalls.h"
#include "Platform/CFolders.h"
#include "SongFiles/FileWorkTest.h"

/** A database with files on a disc: a music folder and a cache folder of its own. */
class SongFileTest : public FileWorkTest {
protected:
    using Path = std::filesystem::path;

    SongFileTest() {
        CFolders::SetRoot(i_folder / "root");
        for (const char* nameZ : {"Music", "cache", "out"}) std::filesystem::create_directories(i_folder / nameZ);
        LibrarySettings settings;
        settings.musicFolder = i_folder / "Music";
        settings.cacheFolder = i_folder / "cache";
        i_databaseP->SetSettings(settings);
        s_alerts.clear();
        SetAlertHook([](std::string_view message, std::string_view) { s_alerts.emplace_back(message); });
    }
    ~SongFileTest() override {
        CFileCalls::Install(nullptr);
        SetAlertHook(nullptr);
        CFolders::SetRoot({});
    }
    template <class Change>
    void ChangeSettings(Change change) {
        LibrarySettings settings = *i_databaseP->Settings();
        change(settings);
        i_databaseP->SetSettings(settings);
    }
    /** A file below the test's folder. */
    Path Make(const Path& name, const std::string& content = "") const {
        std::filesystem::create_directories((i_folder / name).parent_path());
        std::ofstream(i_folder / name, std::ios::binary) << (content.empty() ? name.string() : content);
        return i_folder / name;
    }
    static std::string Read(const Path& file) {
        std::ifstream in(file, std::ios::binary);
        return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "(none)";
    }
    /** What lies below a folder of the test, in one line. */
    std::string Tree(const Path& folder) const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(i_folder / folder))
            if (entry.is_regular_file()) names.insert(entry.path().lexically_relative(i_folder / folder));
        std::string all;
        for (const std::string& name : names) all += (all.empty() ? "" : "|") + name;
        return all;
    }
    /** Another program: python's zipfile. `script` sees the zip's path as z. */
    std::string Python(const Path& zip, const std::string& script) const {
        const Path file = i_folder / "script.py";
        std::ofstream(file) << "import sys, zipfile\nz = sys.argv[1]\n" << script << "\n";
        const Path out = i_folder / "script.out";
        const std::string command =
            "python3 '" + file.string() + "' '" + zip.string() + "' > '" + out.string() + "' 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0) << Read(out);
        return Read(out);
    }
    /** Another program makes the sound: a tenth of a second, once. */
    std::string Sound() const {
        static const std::string s_sound = [this] {
            (void)Python(i_folder / "sound.wav",
                         "import wave, struct\nw = wave.open(z, 'wb'); w.setnchannels(2); w.setsampwidth(2); "
                         "w.setframerate(44100)\nw.writeframes(b''.join(struct.pack('<hh', n * 7 % 30000, -n) for n in "
                         "range(4410)))");
            return Read(i_folder / "sound.wav");
        }();
        return s_sound;
    }
    CSong& PairIn(const Path& folder, const std::string& base, std::string_view name, std::string_view artist) {
        CSong& song = Song(name, artist);
        EXPECT_EQ(song.SetFile(SDB_SongFile_AUDIO, CFileRef(Make(folder / (base + ".mp3")))), noErr);
        EXPECT_EQ(song.SetFile(SDB_SongFile_VIDEO, CFileRef(Make(folder / (base + ".cdg")))), noErr);
        return song;
    }
    static inline std::vector<std::string> s_alerts;
};
