#include "Core/SuperString.h"

#include <random>

#include "Core/UTF8.h"

namespace {

std::vector<std::byte> Raw(std::string_view text) {
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

TEST(SuperString, CopiesShareAndEmptyIsEmpty) {
    const SuperString a = "text";
    const SuperString b = a;
    EXPECT_EQ(a.CString(), b.CString());   // the same bytes, not equal ones
    EXPECT_EQ(SuperString(static_cast<const char*>(nullptr)), SuperString());
    EXPECT_EQ(SuperString("日本🎤").Length(), 3U);
}

TEST(SuperString, CaseFormAndTrim) {
    const struct {
        const char *given, *lower, *upper, *capital;
    } kCases[] = {
        {"straße ÉTÉ", "straße été", "STRASSE ÉTÉ", "Straße ÉTÉ"},
        {"o'neil", "o'neil", "O'NEIL", "O'neil"},
        {"ac/dc r.e.m. 10cc", "ac/dc r.e.m. 10cc", "AC/DC R.E.M. 10CC", "Ac/Dc R.E.M. 10Cc"},
        {"rock 'n' roll", "rock 'n' roll", "ROCK 'N' ROLL", "Rock 'N' Roll"},
        {"cafe\u0301s ĳ", "cafe\u0301s ĳ", "CAFE\u0301S Ĳ", "Cafe\u0301s Ĳ"},
        {"don\u2019t", "don\u2019t", "DON\u2019T", "Don\u2019t"},
        {"", "", "", ""},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(SuperString(c.given).Lowercased(), c.lower);
        EXPECT_EQ(SuperString(c.given).Uppercased(), c.upper);
        EXPECT_EQ(SuperString(c.given).Capitalized(), c.capital);
    }
    EXPECT_EQ(SuperString(" \t\u3000a b\u00A0\n").Trimmed(), "a b");
    EXPECT_EQ(SuperString(" \u2003 ").Trimmed(), "");
    EXPECT_EQ(SuperString("e\u0301").Normalized(NormalForm::kC), "\u00E9");
    EXPECT_EQ(SuperString("\u00E9").Normalized(NormalForm::kD), "e\u0301");
    EXPECT_EQ(SuperString("\uFB01").Normalized(NormalForm::kKC), "fi");
    EXPECT_EQ(SuperString("Beyoncé Ångström").WithoutDiacritics(), "Beyonce Angstrom");
    EXPECT_EQ(SuperString("aXbXX").Replaced("X", "--"), "a--b----");
    EXPECT_EQ(SuperString("aaa").Replaced("aa", "b"), "ba");
    EXPECT_EQ(SuperString("aaa").Replaced("", "b"), "aaa");
}

TEST(SuperString, OrderOfPeopleAndOfBytes) {
    const SuperString apple = "apple";
    const SuperString banana = "Banana";
    EXPECT_LT(apple.Collate(banana), 0);
    EXPECT_LT(banana, apple);   // bytes: capitals come first
    EXPECT_LT(SuperString("Édith").Collate("Eve"), 0);
    EXPECT_NE(apple.Collate("Apple"), 0);
    EXPECT_EQ(apple.CollateNoCase("APPLE"), 0);
    EXPECT_NE(apple.CollateNoCase("applé"), 0);
    EXPECT_TRUE(SuperString("STRASSE").EqualNoCase("straße"));
    EXPECT_FALSE(apple.EqualNoCase("apples"));
}

TEST(SuperString, Encodings) {
    SuperString text = "kept";
    EXPECT_EQ(SuperString::FromBytes(Raw("caf\x8E \xD2x\xD3"), TextEncoding::kMacRoman, text), noErr);
    EXPECT_EQ(text, "café “x”");
    EXPECT_EQ(SuperString::FromBytes(Raw("\x93h\xE9\x94"), TextEncoding::kWindows1252, text), noErr);
    EXPECT_EQ(text, "“hé”");
    EXPECT_EQ(SuperString::FromBytes(Raw({"\xFF\xFE\xE9\0", 4}), TextEncoding::kUTF16, text), noErr);
    EXPECT_EQ(text, "é");
    EXPECT_EQ(SuperString::FromBytes(Raw({"\0\xE9", 2}), TextEncoding::kUTF16, text), noErr);
    EXPECT_EQ(text, "é");
    EXPECT_EQ(SuperString::FromBytes(Raw("\xC3("), TextEncoding::kUTF8, text), paramErr);
    EXPECT_EQ(SuperString::FromBytes(Raw({"\xD8\0\0A", 4}), TextEncoding::kUTF16BE, text), paramErr);
    EXPECT_EQ(SuperString::FromBytes(Raw("abc"), TextEncoding::kUTF16LE, text), paramErr);
    EXPECT_EQ(text, "é");   // as it was
    std::vector<std::byte> bytes = Raw("kept");
    EXPECT_EQ(SuperString("日").ToBytes(TextEncoding::kMacRoman, bytes), paramErr);
    EXPECT_EQ(SuperString("日").ToBytes(TextEncoding::kWindows1252, bytes), paramErr);
    EXPECT_EQ(bytes, Raw("kept"));
    EXPECT_EQ(SuperString("é").ToBytes(TextEncoding::kUTF16, bytes), noErr);
    EXPECT_EQ(bytes, Raw({"\xFE\xFF\0\xE9", 4}));
    for (const auto encoding : {TextEncoding::kUTF8, TextEncoding::kUTF16BE, TextEncoding::kUTF16LE,
                                TextEncoding::kUTF16, TextEncoding::kMacRoman, TextEncoding::kWindows1252})
        for (const char* givenZ : {"", "plain", "café “x” …"}) {
            ASSERT_EQ(SuperString(givenZ).ToBytes(encoding, bytes), noErr);
            ASSERT_EQ(SuperString::FromBytes(bytes, encoding, text), noErr);
            EXPECT_EQ(text, givenZ);
        }
}

TEST(SuperString, OSTypesAreMacRoman) {
    EXPECT_EQ(SuperString::FromOSType(FourCC("soID")), "soID");
    EXPECT_EQ(SuperString::FromOSType(0xA9616C62), "©alb");
    OSType code = 0;
    EXPECT_EQ(SuperString("©alb").ToOSType(code), noErr);
    EXPECT_EQ(code, 0xA9616C62);
    for (const char* badZ : {"", "abc", "abcde", "日本語x"})
        EXPECT_EQ(SuperString(badZ).ToOSType(code), paramErr) << badZ;
    std::mt19937 random(1);
    for (int n = 0; n < 200; ++n) {
        const auto given = static_cast<OSType>(random());
        ASSERT_EQ(SuperString::FromOSType(given).ToOSType(code), noErr);
        ASSERT_EQ(code, given);
    }
}

/** The table 3-7 of the Unicode standard, one row a kind of sequence. */
TEST(UTF8, EveryCodeAndNothingElse) {
    const auto encode = [](std::uint32_t c) {
        std::string text;
        const auto put = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
        if (c < 0x80) return put(c), text;
        if (c < 0x800) return put(0xC0 | c >> 6), put(0x80 | (c & 63)), text;
        if (c < 0x10000) return put(0xE0 | c >> 12), put(0x80 | (c >> 6 & 63)), put(0x80 | (c & 63)), text;
        return put(0xF0 | c >> 18), put(0x80 | (c >> 12 & 63)), put(0x80 | (c >> 6 & 63)), put(0x80 | (c & 63)), text;
    };
    for (std::uint32_t c = 0; c < 0x140000; c += c < 0x11000 ? 1 : 37) {
        const std::string text = encode(c);
        const UTF8Char got = NextUTF8(text);
        const bool validB = c < 0xD800 || (c > 0xDFFF && c <= 0x10FFFF);
        ASSERT_EQ(got.validB, validB) << c;
        if (!validB) continue;
        ASSERT_EQ(got.code, c);
        ASSERT_EQ(got.bytesL, text.size());
        ASSERT_TRUE(text.size() == 1 || !NextUTF8(text.substr(0, text.size() - 1)).validB);
    }
    for (const char* badZ : {"\x80", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xFF", "\xC3("})
        EXPECT_FALSE(NextUTF8(badZ).validB);
}

}   // namespace
