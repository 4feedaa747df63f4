#include "Zip/CInflate64.h"

#include <cstring>
#include <random>

#include "Zip/ZipRecords.h"
#include "Zip/ZipTest.h"

namespace {

class CInflate64_Test : public ZipTest {
protected:
    /** The packed bytes of big.bin, as 7z made them. */
    static std::string Packed(const char* zipZ) {
        const std::string zip = Bytes(zipZ);
        CZipArchive archive;
        MemorySource text(zip);
        EXPECT_EQ(archive.Open(text), noErr);
        const CZipMember& member = *Find(archive, "big.bin");
        const auto at = std::as_bytes(std::span(zip)).subspan(static_cast<std::size_t>(member.headerAt));
        return zip.substr(static_cast<std::size_t>(member.headerAt) + 30 + ZipU16(at, 26) + ZipU16(at, 28),
                          static_cast<std::size_t>(member.packedL));
    }
    /** In pieces of up to `inMostL` and `outMostL` bytes. */
    static CInflate64::Status Run(const std::string& packed, std::size_t inMostL, std::size_t outMostL,
                                  std::string& out, std::uint64_t* usedP = nullptr) {
        auto inflate = std::make_unique<CInflate64>();
        std::mt19937 random(static_cast<unsigned>(inMostL));
        std::vector<std::byte> room(outMostL);
        std::span<const std::byte> left = std::as_bytes(std::span(packed));
        out.clear();
        for (;;) {
            const auto in = left.first(std::min(left.size(), inMostL == 1 ? 1 : random() % inMostL + 1));
            const CInflate64::Step step = inflate->Run(in, std::span(room).first(random() % outMostL + 1));
            out.append(reinterpret_cast<const char*>(room.data()), step.givenL);
            left = left.subspan(step.takenL);
            if (usedP != nullptr) *usedP = inflate->UsedBytes();
            if (step.status == CInflate64::Status::kEnd || step.status == CInflate64::Status::kBad) return step.status;
            if (step.givenL == 0 && left.empty()) return step.status;
        }
    }
};

TEST_F(CInflate64_Test, AnyPiecesGiveTheSame) {
    const std::string whole = Bytes("big.bin");
    for (const char* const zipZ : {"deflate64.zip", "deflate64fast.zip"}) {
        const std::string packed = Packed(zipZ);
        for (const auto& [inL, outL] : {std::pair<std::size_t, std::size_t>{1, 5'000'000},
                                        {7, 100},
                                        {17, 70'000},
                                        {40'000, 1'000},
                                        {5'000'000, 5'000'000}}) {
            SCOPED_TRACE(testing::Message() << zipZ << " " << inL << " " << outL);
            std::string out;
            std::uint64_t usedL = 0;
            EXPECT_EQ(Run(packed + "tail", inL, outL, out, &usedL), CInflate64::Status::kEnd);
            EXPECT_TRUE(out == whole);
            EXPECT_EQ(usedL, packed.size());
        }
    }
}

TEST_F(CInflate64_Test, ACopyGoesOnWhereItWasMade) {
    const std::string whole = Bytes("big.bin"), packed = Packed("deflate64.zip");
    const auto in = std::as_bytes(std::span(packed));
    CInflate64 first;
    std::vector<std::byte> out(whole.size());
    const CInflate64::Step step = first.Run(in, std::span(out).first(1'234'567));
    ASSERT_EQ(step.status, CInflate64::Status::kNeedOutput);
    for (int twice = 0; twice < 2; ++twice) {
        CInflate64 copy = first;
        std::ranges::fill(std::span(out).subspan(step.givenL), std::byte{0});
        const CInflate64::Step rest = copy.Run(in.subspan(step.takenL), std::span(out).subspan(step.givenL));
        EXPECT_EQ(rest.givenL, out.size() - step.givenL);
        EXPECT_EQ(std::memcmp(out.data(), whole.data(), whole.size()), 0);
    }
}

/** Bits of a stream by hand: numbers from the low end, codes from the high one. */
class Bits {
public:
    Bits& Number(unsigned number, unsigned bitsL) {
        for (; bitsL > 0; --bitsL, number >>= 1) Put(number & 1);
        return *this;
    }
    Bits& Code(unsigned code, unsigned bitsL) {
        while (bitsL-- > 0) Put(code >> bitsL & 1);
        return *this;
    }
    /** 0 to 143 in the fixed code. */
    Bits& Literal(char c) { return Code(0x30 + static_cast<unsigned>(c), 8); }
    std::string Text() const { return i_text; }

private:
    void Put(unsigned bit) {
        if (i_countL++ % 8 == 0) i_text.push_back(0);
        i_text.back() = static_cast<char>(static_cast<unsigned char>(i_text.back()) | bit << (i_countL - 1) % 8);
    }
    std::string i_text;
    unsigned i_countL = 0;
};

TEST_F(CInflate64_Test, TheLongestMatchAndEveryFault) {
    const auto fixed = [] { return Bits().Number(1, 1).Number(1, 2); };
    using Status = CInflate64::Status;
    const struct {
        const char* whatZ;
        std::string packed;
        Status status;
        std::string out;
    } kCases[] = {
        {"nothing", "", Status::kNeedInput, ""},
        {"an empty block", fixed().Code(0, 7).Text(), Status::kEnd, ""},
        {"code 285 with all its bits",
         fixed().Literal('a').Code(0xC5, 8).Number(0xFFFF, 16).Code(0, 5).Code(0, 7).Text(), Status::kEnd,
         std::string(65'539, 'a')},
        {"code 285 for three", fixed().Literal('a').Code(0xC5, 8).Number(0, 16).Code(0, 5).Code(0, 7).Text(),
         Status::kEnd, "aaaa"},
        {"from before the start", fixed().Literal('a').Code(1, 7).Code(1, 5).Text(), Status::kBad, "a"},
        {"distance code 31 from before the start",
         fixed().Literal('a').Code(1, 7).Code(31, 5).Number(0x3FFF, 14).Code(0, 7).Text(), Status::kBad, "a"},
        {"symbol 286", fixed().Literal('a').Code(0xC6, 8).Text() + "xx", Status::kBad, "a"},
        {"block type 3", "\7", Status::kBad, ""},
        {"stored",
         std::string("\1\3\0\xFC\xFF"
                     "abc",
                     8),
         Status::kEnd, "abc"},
        {"stored, wrong check",
         std::string("\1\3\0\xFC\xFE"
                     "abc",
                     8),
         Status::kBad, ""},
        {"288 literal codes", Bits().Number(1, 1).Number(2, 2).Number(31, 5).Number(0, 5).Number(0, 4).Text(),
         Status::kBad, ""},
        {"too many codes of one bit",
         Bits()
             .Number(1, 1)
             .Number(2, 2)
             .Number(0, 5)
             .Number(0, 5)
             .Number(0, 4)
             .Number(1, 3)
             .Number(1, 3)
             .Number(1, 3)
             .Number(0, 3)
             .Text(),
         Status::kBad, ""},
        {"a repeat of nothing",
         Bits()
             .Number(1, 1)
             .Number(2, 2)
             .Number(0, 5)
             .Number(0, 5)
             .Number(0, 4)
             .Number(1, 3)
             .Number(0, 3)
             .Number(0, 3)
             .Number(1, 3)
             .Code(1, 1)
             .Number(0, 2)
             .Text(),
         Status::kBad, ""},
    };
    for (const auto& c : kCases)
        for (const std::size_t pieceL : {std::size_t{1}, std::size_t{100'000}}) {
            SCOPED_TRACE(testing::Message() << c.whatZ << " by " << pieceL);
            std::string out;
            EXPECT_EQ(Run(c.packed, pieceL, pieceL, out), c.status);
            EXPECT_TRUE(out == c.out);
        }
}

}   // namespace
