#include "SongFiles/CSongLengths.h"

#include "Media/MediaFiles.h"
#include "SongFiles/AddFilesToLibrary.h"
#include "SongFiles/SongFileTest.h"

namespace {

class SongLengths : public SongFileTest, protected CListWatcher {
protected:
    SongLengths() {
        ChangeSettings([](LibrarySettings& settings) { settings.requireAudioB = false; });
        i_databaseP->AddWatcher(*this);
    }
    /** 16-bit stereo at 44.1 kHz, silent. */
    static std::string Wav(std::uint32_t seconds) {
        std::string bytes = "RIFF";
        const auto put = [&bytes](auto value) {
            bytes.append(reinterpret_cast<const char*>(&value), sizeof value);   // as x86 and ARM have it
        };
        const std::uint32_t soundL = seconds * 176400;
        put(36 + soundL);
        bytes += "WAVEfmt ";
        for (const std::uint32_t word : {16U, 0x00020001U, 44100U, 176400U, 0x00100004U}) put(word);
        bytes += "data";
        put(soundL);
        return bytes + std::string(soundL, '\0');
    }
    static std::string Packets(std::size_t countL) { return std::string(countL * 24, '\0'); }
    static std::string Media(const char* nameZ) { return MediaFiles::Get().Bytes(MediaFiles::Folder() / nameZ); }
    /** Adds what lies in "out", and waits for the lengths: "name: 300ths" of each song. */
    std::vector<std::string> Added() {
        const std::vector<Path> paths{i_folder / "out"};
        const std::vector<SongID> songs = AddFilesToLibrary(*i_databaseP, paths);
        WaitForLengths();
        std::vector<std::string> lines;
        for (const SongID id : songs) {
            CSong* const songP = i_databaseP->GetSong(id);
            const CMetaValue length = songP->Meta().Stored("drtn"_key);
            lines.push_back(songP->Name().UTF8() + ": " + (length ? std::to_string(length.Integer()) : "none"));
        }
        return lines;
    }
    void WaitForLengths() {
        EXPECT_TRUE(i_filesP->Lengths().IsBusy());
        while (i_filesP->Lengths().IsBusy()) i_host.RunLoopPass();
    }
    void DurationChanged(PlaylistID list) override {
        if (list == kPlaylistID_Library) ++i_sumsL;
    }
    long i_sumsL = 0;
};

TEST_F(SongLengths, EachKindOfSongGetsThatOfTheFilesThatPlay) {
    Make("out/a pair.wav", Wav(3));
    Make("out/a pair.cdg", Packets(1200));
    Make("out/b graphics.cdg", Packets(777));
    Make("out/c sound.mp3", Media("vbr.mp3"));
    Make("out/d movie.mp4", Media("movie.mp4"));
    MediaFiles::Run("ffmpeg -nostdin -v error -y -i '" + (MediaFiles::Folder() / "movie.mp4").string() +
                    "' -an -c copy '" + (i_folder / "out/e silent movie.mp4").string() + "'");
    Make("in/x.mp3", Media("cbr.mp3"));
    Make("in/x.cdg", Packets(1200));
    const std::string from =
        "import os; i = os.path.join(os.path.dirname(z), '..', 'in/')\n"
        "f = zipfile.ZipFile(z, 'w', zipfile.ZIP_DEFLATED)\n";
    (void)Python(i_folder / "out/f zip.zip", from + "f.write(i + 'x.mp3', 'x.mp3'); f.write(i + 'x.cdg', 'x.cdg')");
    (void)Python(i_folder / "out/g zip of graphics.zip", from + "f.write(i + 'x.cdg', 'x.cdg')");
    Make("out/h noise.mp3", Media("song.m4a").substr(500, 20000));
    Make("out/i noise.mp3");   // its own name is all that it holds
    Make("out/i noise.cdg", Packets(50));
    EXPECT_EQ(Added(), (std::vector<std::string>{"a pair: 900", "b graphics: 777", "c sound: 690", "d movie: 690",
                                                 "e silent movie: 696", "f zip: 690", "g zip of graphics: 1200",
                                                 "h noise: none", "i noise: none"}));
}

TEST_F(SongLengths, OnlySongsWithoutOneAreLookedAtAndAListKnowsItsSum) {
    CSong& given = PairIn("out", "given", "given", "");
    given.Meta().SetInteger("drtn"_key, 5);
    CSong& away = Song("away");
    ASSERT_EQ(away.SetFile(SDB_SongFile_AUDIO, CFileRef(i_folder / "nowhere/away.mp3")), noErr);
    CSong& found = Song("found");
    ASSERT_EQ(found.SetFile(SDB_SongFile_AUDIO, CFileRef(Make("out/found.wav", Wav(2)))), noErr);
    CPlayList& library = i_databaseP->Library();
    for (CSong* const songP : {&given, &away, &found}) (void)i_databaseP->AddSongToLibrary(*songP);
    i_databaseP->FlushChanges();
    const auto sumIs = [&](std::uint64_t sum300) {
        while (library.Duration300() != sum300) i_host.RunLoopPass();
        return true;
    };
    EXPECT_TRUE(sumIs(5));
    i_filesP->Lengths().FindAll();
    const SongID late = found.GetSongID();
    i_filesP->Lengths().Find(std::span(&late, 1));   // waits its turn, and has its length by then
    WaitForLengths();
    EXPECT_EQ(given.Meta().GetInteger("drtn"_key), 5);
    EXPECT_FALSE(away.Meta().Stored("drtn"_key));
    EXPECT_EQ(found.Meta().GetInteger("drtn"_key), 600);
    EXPECT_TRUE(Logged("Lengths: looked at 2 songs, found 1"));
    i_sumsL = 0;
    i_databaseP->FlushChanges();
    EXPECT_EQ(i_sumsL, 1);   // ask it
    EXPECT_EQ(library.Duration300(), 5U);
    EXPECT_TRUE(sumIs(605));
    EXPECT_EQ(i_sumsL, 2);
    // A song that is there twice counts twice; one that leaves no more.
    const std::vector<PLItemID> rows = library.Items()->UserOrder();
    (void)library.AddItem({found.GetSongID()});
    EXPECT_TRUE(sumIs(1205));
    ASSERT_EQ(library.RemoveItem(rows.front()), noErr);
    EXPECT_TRUE(sumIs(1200));
}

TEST_F(SongLengths, TheDatabaseMayGoWhileTheyAreLookedFor) {
    for (int n = 0; n < 300; ++n) Make("out/" + std::to_string(n) + ".mp3", Media("plain.mp3"));
    const std::vector<Path> paths{i_folder / "out"};
    EXPECT_EQ(AddFilesToLibrary(*i_databaseP, paths).size(), 300U);
    EXPECT_TRUE(i_filesP->Lengths().IsBusy());
    i_databaseP->RemoveWatcher(*this);
    i_filesP.reset();
    i_databaseP.reset();
}

}   // namespace
