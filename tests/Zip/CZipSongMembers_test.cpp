#include "Zip/CZipSongMembers.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

struct Member {
    const char* nameZ;
    std::uint64_t sizeL = 1;
    ZipFault fault = ZipFault::kNone;
};

TEST(CZipSongMembers, WhichMembersAreTheSong) {
    const struct {
        const char* whatZ;
        std::vector<Member> members;
        int audio, graphics, video, lyrics;   // -1: none
    } kCases[] = {
        {"a plain pair", {{"a.cdg"}, {"a.mp3"}}, 1, 0, -1, -1},
        {"any case, in a folder", {{"X/"}, {"X/A b.CDG"}, {"X/a B.Mp3"}}, 2, 1, -1, -1},
        {"backslashes", {{"X\\a.cdg"}, {"X\\a.ogg"}}, 1, 0, -1, -1},
        {"names that do not agree", {{"one.mp3"}, {"two.cdg"}}, 0, 1, -1, -1},
        {"two songs' audio: the one that fits", {{"big.mp3", 99}, {"a.mp3", 5}, {"a.cdg"}}, 1, 2, -1, -1},
        {"none fits: the largest", {{"x.mp3", 5}, {"y.flac", 99}, {"z.cdg"}}, 1, 2, -1, -1},
        {"two pairs: the larger audio", {{"a.mp3", 5}, {"a.cdg"}, {"b.mp3", 6}, {"b.cdg"}}, 2, 3, -1, -1},
        {"two audios of one name", {{"a.mp3", 5}, {"a.wav", 50}, {"a.cdg"}}, 1, 2, -1, -1},
        {"a pair that cannot be read",
         {{"a.mp3", 9, ZipFault::kEncrypted}, {"a.cdg"}, {"b.mp3"}, {"b.cdg"}},
         2,
         3,
         -1,
         -1},
        {"all encrypted", {{"a.mp3", 9, ZipFault::kEncrypted}, {"a.cdg", 9, ZipFault::kEncrypted}}, 0, 1, -1, -1},
        {"what other systems leave",
         {{"__MACOSX/._a.mp3", 99}, {"X/__macosx/a.cdg"}, {"._a.mp3", 99}, {".cdg"}, {"a.mp3"}, {"a.cdg"}},
         4,
         5,
         -1,
         -1},
        {"a folder named like a song", {{"a.mp3/"}, {"a.mp3/b.mp3"}}, 1, -1, -1, -1},
        {"audio alone", {{"read me.doc"}, {"a.m4a"}}, 1, -1, -1, -1},
        {"graphics alone", {{"a.mcg"}}, -1, 0, -1, -1},
        {"a video", {{"a.mp4"}, {"a.jpg", 99}}, -1, -1, 0, -1},
        {"a video with its sound beside it", {{"a.mkv"}, {"a.mp3"}}, -1, -1, 0, -1},
        {"an .mp4 as the sound of a pair", {{"a.mp4"}, {"a.cdg"}}, 0, 1, -1, -1},
        {"audio and lyrics", {{"z.txt", 50}, {"a.mp3"}, {"a.lrc"}}, 1, -1, -1, 2},
        {"lyrics of any name", {{"z.txt", 50}, {"a.mp3"}}, 1, -1, -1, 0},
        {"no song", {{"a.exe"}, {"mp3"}, {""}}, -1, -1, -1, -1},
        {"nothing", {}, -1, -1, -1, -1},
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.whatZ);
        std::vector<CZipMember> members;
        for (const Member& m : c.members) {
            CZipMember& member = members.emplace_back();
            member.name = m.nameZ;
            member.sizeL = m.sizeL;
            member.fault = m.fault;
        }
        const auto number = [](std::optional<std::size_t> n) { return n ? static_cast<int>(*n) : -1; };
        const CZipSongMembers chosen = CZipSongMembers::Choose(members);
        EXPECT_EQ(number(chosen.audio), c.audio);
        EXPECT_EQ(number(chosen.graphics), c.graphics);
        EXPECT_EQ(number(chosen.video), c.video);
        EXPECT_EQ(number(chosen.lyrics), c.lyrics);
    }
}

}   // namespace
