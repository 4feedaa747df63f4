#include "Storage/CSongRecordMeta.h"

#include "Meta/MetaTest.h"

namespace {

class SongRecordMeta : public MetaTest {
protected:
    CSongRecordMeta i_forms{"/music", CSongStatus("/music", "/cache")};
};

TEST_F(SongRecordMeta, WhatWasLoadedIsWrittenAgain) {
    SongRecord record;
    record.songID = 9;
    record.duration = 200;
    record.track = 0xFFFFFFFF;
    record.timesSung = 4;
    record.date = -2000000000;
    record.size = 3'000'000'000;
    record.rating = 80;
    record.vocalChannel = 2;
    record.pitch = -12;
    record.tempo = 29;
    record.year = 1984;
    record.graphicChannels = 5;
    record.format = FourCC("MP3 ");
    record.start = 75;
    record.dateAdded = PackDateAdded(CFDate{700'000'000});
    record.flags = kSongFlag_Pip3 | kSongFlag_AudioRelative | kSongFlag_Missing;
    record.Text(SongText::kName) = "Ёлочка";
    record.Text(SongText::kArtist) = "Artist";
    record.Text(SongText::kComment) = "c";
    record.Text(SongText::kAudioPath) = "Artist/caf\xe9.mp3";   // no UTF-8: kept byte for byte
    record.Text(SongText::kVideoPath) = "/elsewhere/a.cdg";
    CMeta song;
    i_forms.Load(record, song);
    EXPECT_EQ(song.Stored("PICH"_key).Integer(), -12);
    EXPECT_EQ(song.Stored("Sfs0"_key).FilePath(), "/music/Artist/caf\xe9.mp3");
    EXPECT_EQ(song.Stored("Sfs0"_key).FileStatus(), SDB_SongFileStatus_MUSIC);
    EXPECT_EQ(song.Stored("Sfs1"_key).FileStatus(), SDB_SongFileStatus_REFERENCE);
    EXPECT_FALSE(song.IsDirty());
    CCFDictionary rest;
    EXPECT_EQ(i_forms.Make(9, song, rest), record);
    EXPECT_EQ(rest, CCFDictionary());
}

TEST_F(SongRecordMeta, ASongWithoutValuesHasThoseThatMeanNone) {
    CMeta song;
    SongRecord expected;
    expected.songID = 1;
    expected.rating = 255;
    expected.flags = kSongFlag_Missing;
    CCFDictionary none;
    const SongRecord record = i_forms.Make(1, song, none);
    EXPECT_EQ(record, expected);
    CMeta again;
    i_forms.Load(record, again);
    EXPECT_EQ(again.AllStored().size(), 1U);
    EXPECT_EQ(again.Stored("Msng"_key).Bool(), BoolValueType::kTrue);
    CMeta sound;   // which is a whole song
    sound.SetSongFile("Sfs0"_key, {SDB_SongFileStatus_REFERENCE, CFileRef("/elsewhere/a.mp3")});
    EXPECT_EQ(i_forms.Make(1, sound, none).flags, 0);
}

TEST_F(SongRecordMeta, NothingClimbsOutOfTheMusicFolder) {
    SongRecord record;
    record.flags = kSongFlag_AudioRelative | kSongFlag_ZipRelative;
    record.Text(SongText::kAudioPath) = "../home/somebody.mp3";
    record.Text(SongText::kZipPath) = "/etc/passwd";
    CMeta song;
    i_forms.Load(record, song);
    EXPECT_EQ(song.Stored("Sfs0"_key).FileStatus(), SDB_SongFileStatus_REFERENCE);
    EXPECT_EQ(song.Stored("Sfs2"_key).FileStatus(), SDB_SongFileStatus_REFERENCE);
}

TEST_F(SongRecordMeta, WhatDoesNotFitStandsAmongTheRest) {
    CMeta song;
    song.SetString("SUBg"_key, "words");
    song.SetInteger("cryr"_key, 70'000);
    song.SetString("Frmt"_key, "longer than four");
    song.SetSongFile("Sfs3"_key, {SDB_SongFileStatus_CACHE, CFileRef("/cache/a.pcm")});
    CCFDictionary rest;
    const SongRecord record = i_forms.Make(1, song, rest);
    EXPECT_EQ(record.year, 0);
    EXPECT_EQ(record.format, SongRecord::kNoFormat);
    EXPECT_EQ(rest.GetString("Frmt"), "longer than four");
    EXPECT_EQ(rest.GetInteger("cryr"), 70'000);
    EXPECT_TRUE(rest.Has("SUBg"));
    EXPECT_TRUE(rest.Has("Sfs3"));
    EXPECT_EQ(rest.Size(), 4U);
    CMeta again;
    i_forms.Load(record, again);
    again.FromDictionary(rest);
    EXPECT_EQ(again.Stored("cryr"_key), song.Stored("cryr"_key));
    EXPECT_EQ(again.Stored("Sfs3"_key).FilePath(), "/cache/a.pcm");
}

}   // namespace
