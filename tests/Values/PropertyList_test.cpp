#include "Values/PropertyList.h"

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "Core/Base64.h"
#include "Core/TempFolder.h"
#include "Values/CCFDictionary.h"
#include "Values/CCFXmlParser.h"
#include "Values/CCFXmlWriter.h"

namespace {

std::span<const std::byte> Bytes(std::string_view text) { return std::as_bytes(std::span(text)); }

std::string Hex(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        text += kDigits[static_cast<unsigned char>(c) >> 4];
        text += kDigits[static_cast<unsigned char>(c) & 15];
    }
    return text;
}

/** The plain form of plist_witness.py. */
void Show(const CCFValue& value, const std::string& path, std::string& out) {
    out += path + " " + std::string(CFTypeName(value.Type())) + " ";
    switch (value.Type()) {
        case CFType::kBool:
            out += *value.Bool() ? "1\n" : "0\n";
            return;
        case CFType::kInteger:
            out += std::to_string(*value.Integer()) + "\n";
            return;
        case CFType::kFloat: {
            const auto bits = std::bit_cast<std::array<char, 8>>(*value.Number());
            out += std::isnan(*value.Number()) ? "nan\n" : Hex(std::string(bits.rbegin(), bits.rend())) + "\n";
            return;
        }
        case CFType::kString:
            out += Hex(*value.String()) + "\n";
            return;
        case CFType::kDate:
            out += std::to_string(std::llround(value.Date()->absoluteT)) + "\n";
            return;
        case CFType::kData:
            out += Hex({reinterpret_cast<const char*>(value.Data()->data()), value.Data()->size()}) + "\n";
            return;
        case CFType::kArray: {
            out += std::to_string(value.Array()->size()) + "\n";
            std::size_t n = 0;
            for (const CCFValue& member : *value.Array()) Show(member, path + "/" + std::to_string(n++), out);
            return;
        }
        case CFType::kDictionary:
            out += std::to_string(value.Dictionary()->Size()) + "\n";
            for (const auto& [key, member] : *value.Dictionary()) Show(member, path + "/" + key, out);
    }
}

int Witness(const std::string& arguments) {
    return std::system(("python3 " VOPLA_SOURCE_DIR "/tests/Values/plist_witness.py " + arguments).c_str());
}

TEST(PropertyList, ReadsWhatPlistlibWritesAndPlistlibReadsWhatWeWrite) {
    const TempFolder folder;
    const std::string theirs = (folder / "theirs.plist").string();
    const std::string ours = (folder / "ours.plist").string();
    const std::string shown = (folder / "shown").string();
    ASSERT_EQ(Witness("make " + theirs), 0);
    CCFValue value(false);
    ASSERT_EQ(ReadPropertyListFile(theirs, value), noErr);
    std::string text;
    ASSERT_EQ(WritePropertyList(value, text), noErr);
    WriteWhole(ours, text);
    std::string mine;
    Show(value, "", mine);
    EXPECT_GT(mine.size(), 1000U);
    for (const std::string& file : {theirs, ours}) {
        ASSERT_EQ(Witness("show " + file + " > " + shown), 0);
        EXPECT_EQ(mine, ReadWhole(shown)) << file;
    }
}

std::string Sample() {
    const CCFDictionary inner{
        {"key & <tag>", "5 > 4 \r\n"}, {"data", CFData(100, std::byte{7})}, {"date", CFDate{1e8}}};
    const CCFValue value(CCFDictionary{
        {"list", CFArray{inner, true, 1.5, -7, "日本"}}, {"empty", CFArray{}}, {"none", CCFDictionary{}}});
    std::string text;
    EXPECT_EQ(WritePropertyList(value, text), noErr);
    CCFValue again(false);
    EXPECT_EQ(ReadPropertyList(Bytes(text), again), noErr);
    EXPECT_EQ(again, value);
    return text;
}

TEST(PropertyList, CutAtEveryByteIsAStatusAndTheValueStays) {
    const std::string text = Sample();
    const std::size_t wholeL = text.rfind('>') + 1;
    const std::size_t bodyL = text.find("<plist");   // a document type that is cut is merely no XML
    for (std::size_t n = 0; n < wholeL; ++n) {
        CCFValue value("as it was");
        const OSErr err = ReadPropertyList(Bytes(text).first(n), value);
        ASSERT_TRUE(Failed(err)) << n << ": " << text.substr(0, n);
        ASSERT_TRUE(err == eofErr || n < bodyL) << n << ": " << text.substr(0, n);
        ASSERT_EQ(value, CCFValue("as it was"));
    }
}

TEST(PropertyList, BrokenAtEveryByteWhatReadsReadsBackTheSame) {
    const std::string good = Sample();
    int readL = 0;
    for (std::size_t n = 0; n < good.size(); ++n)
        for (const char c : {'\0', '<', '&', '\xFF', '9'}) {
            std::string text = good;
            text[n] = c;
            CCFValue value(false);
            CCFValue again(false);
            if (Failed(ReadPropertyList(Bytes(text), value))) continue;
            ++readL;
            std::string written;
            ASSERT_EQ(WritePropertyList(value, written), noErr);
            ASSERT_EQ(ReadPropertyList(Bytes(written), again), noErr) << written;
            ASSERT_EQ(value, again);
        }
    EXPECT_GT(readL, 100);   // a changed letter of a text is no error
}

std::string Wrapped(std::string_view body) { return "<plist version=\"1.0\">" + std::string(body) + "</plist>"; }

TEST(PropertyList, Statuses) {
    std::string deepest;
    for (int n = 0; n < kPList_MaxDepth; ++n) deepest = "<array>" + deepest + "</array>";
    const struct {
        std::string text;
        OSErr err;
    } kCases[] = {
        {Wrapped("<true/>"), noErr},
        {Wrapped(deepest), noErr},
        {Wrapped("<array>" + deepest + "</array>"), paramErr},
        {Wrapped(""), paramErr},
        {"", eofErr},
        {"<dict/>", paramErr},
        {"bplist00", paramErr},
        {Wrapped("<true/><false/>"), paramErr},
        {Wrapped("<true>1</true>"), paramErr},
        {Wrapped("text"), paramErr},
        {Wrapped("<key>k</key>"), paramErr},
        {Wrapped("<array><key>k</key></array>"), paramErr},
        {Wrapped("<dict><true/></dict>"), paramErr},
        {Wrapped("<dict><key>a</key></dict>"), paramErr},
        {Wrapped("<dict><key>a</key><key>b</key></dict>"), paramErr},
        {Wrapped("<string><true/></string>"), paramErr},
        {Wrapped("<other/>"), paramErr},
        {Wrapped("<integer>0x7fffffffffffffff</integer>"), noErr},
        {Wrapped("<integer>-9223372036854775808</integer>"), noErr},
        {Wrapped("<integer>9223372036854775808</integer>"), paramErr},
        {Wrapped("<integer>+-1</integer>"), paramErr},
        {Wrapped("<integer>1.5</integer>"), paramErr},
        {Wrapped("<integer></integer>"), paramErr},
        {Wrapped("<real>+infinity</real>"), noErr},
        {Wrapped("<real>+-1</real>"), paramErr},
        {Wrapped("<real>1,5</real>"), paramErr},
        {Wrapped("<date>2023-02-29T00:00:00Z</date>"), paramErr},
        {Wrapped("<date>2024-02-29T24:00:00Z</date>"), paramErr},
        {Wrapped("<date>0000-01-01T00:00:00Z</date>"), paramErr},
        {Wrapped("<date>2024-02-29</date>"), paramErr},
        {Wrapped("<data>QQ==</data>"), noErr},
        {Wrapped("<data>QQ=</data>"), paramErr},
        {Wrapped("<data>Q</data>"), paramErr},
        {Wrapped("<data>QQ==QQ==</data>"), paramErr},
        {Wrapped("<data>Q!==</data>"), paramErr},
        {"<!DOCTYPE plist [<!ENTITY a \"b\">]>" + Wrapped("<string>&a;</string>"), paramErr},
        {"<!DOCTYPE plist SYSTEM \"x.dtd\">" + Wrapped("<string>&a;</string>"), paramErr},
    };
    for (const auto& c : kCases) {
        CCFValue value(false);
        EXPECT_EQ(ReadPropertyList(Bytes(c.text), value), c.err) << c.text.substr(0, 200);
    }
}

TEST(PropertyList, WhatXMLCannotHoldDoesNotStopASave) {
    const CCFValue value(CFArray{SuperString("a\x01\xFF\xEF\xBF\xBE\xC0\x80z"), CFDate{std::nan("")}, CFDate{1e300},
                                 CFDate{-1e300}, CFDate{-0.5}});
    std::string text;
    ASSERT_EQ(WritePropertyList(value, text), noErr);
    CCFValue again(false);
    ASSERT_EQ(ReadPropertyList(Bytes(text), again), noErr);
    EXPECT_EQ(*again.Array()->at(0).String(), "a\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDz");
    EXPECT_EQ(again.Array()->at(1).Date()->absoluteT, 0);
    EXPECT_EQ(again.Array()->at(4).Date()->absoluteT, -1);
}

TEST(PropertyList, FilesThatAreNone) {
    const TempFolder folder;
    CCFValue value(false);
    EXPECT_EQ(ReadPropertyListFile(folder / "absent", value), fnfErr);
    EXPECT_EQ(ReadPropertyListFile(folder.Path(), value), paramErr);
    WriteWhole(folder / "big", Sample());
    EXPECT_EQ(ReadPropertyListFile(folder / "big", value, 100), memFullErr);
    EXPECT_EQ(ReadPropertyListFile(folder / "big", value), noErr);
}

TEST(CCFXmlParser, GivesRowsAwayAndFeedsInAnyPieces) {
    std::string text;
    CCFXmlWriter writer([&](std::string_view bytes) {
        text += bytes;
        return noErr;
    });
    writer.BeginDictionary();
    writer.Key("Rows");
    writer.BeginArray();
    constexpr int kRows = 3000;
    for (int n = 0; n < kRows; ++n) writer.Value(CCFDictionary{{"id", n}});
    writer.End();
    writer.Key("Rest");
    writer.Value(true);
    writer.End();
    ASSERT_EQ(writer.Finish(), noErr);
    for (const std::size_t pieceL : {std::size_t{1}, std::size_t{7}, text.size()}) {
        std::int64_t nextL = 0;
        CCFXmlParser parser([&](std::span<const std::string> path, CCFValue& value) {
            if (path.size() != 2 || path[0] != "Rows") return false;
            EXPECT_EQ(value.Dictionary()->GetInteger("id", -1), nextL++);
            return true;
        });
        for (std::size_t at = 0; at < text.size(); at += pieceL)
            ASSERT_EQ(parser.Feed(Bytes(text).subspan(at, std::min(pieceL, text.size() - at))), noErr);
        CCFValue root(false);
        ASSERT_EQ(parser.Finish(root), noErr);
        EXPECT_EQ(nextL, kRows);
        EXPECT_EQ(root, CCFValue(CCFDictionary{{"Rows", CFArray{}}, {"Rest", true}}));
    }
}

TEST(CCFXmlWriter, KeepsTheFirstFailureOfTheSinkAndRefusesTooDeep) {
    int callsL = 0;
    CCFXmlWriter full([&](std::string_view) {
        ++callsL;
        return dskFulErr;
    });
    full.BeginArray();
    for (int n = 0; n < 20000; ++n) full.Value("a text that fills the buffer");
    full.End();
    EXPECT_EQ(full.Finish(), dskFulErr);
    EXPECT_EQ(callsL, 1);
    CCFValue deep(1);
    for (int n = 0; n <= kPList_MaxDepth; ++n) deep = CFArray{deep};
    std::string text = "as it was";
    EXPECT_EQ(WritePropertyList(deep, text), paramErr);
    EXPECT_EQ(text, "as it was");
}

TEST(Base64, EveryLengthThereAndBack) {
    std::mt19937 random(1);
    for (std::size_t n = 0; n < 200; ++n) {
        std::vector<std::byte> bytes(n);
        for (auto& byte : bytes) byte = static_cast<std::byte>(random() & 255);
        const std::string text = EncodeBase64(bytes);
        ASSERT_EQ(text.size(), (n + 2) / 3 * 4);
        ASSERT_EQ(DecodeBase64(text), bytes);
        ASSERT_EQ(DecodeBase64(text + "="), std::nullopt);
    }
}

}   // namespace
