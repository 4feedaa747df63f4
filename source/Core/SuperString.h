#pragma once
#include <compare>
#include <cstddef>
#include <memory>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Core/OSType.h"
#include "Platform/OSErr.h"

/** The encodings of text outside the program; inside it is UTF-8. */
enum class TextEncoding {
    kUTF8,
    kUTF16BE,
    kUTF16LE,
    kUTF16 /* by its mark, big-endian without */,
    kMacRoman,
    kWindows1252,
    kISOLatin1
};
enum class NormalForm { kC, kD, kKC, kKD };

/** The string of the whole program: UTF-8 text that never changes once made. A copy shares the bytes.
    Bytes that are not UTF-8 are kept as they came; every operation that has to understand them reads U+FFFD there.
    Threads  any; a SuperString itself is a value and is not assigned by two threads at once.
    Errors   only conversions can fail; all else answers some text. */
class SuperString {
public:
    SuperString() = default;
    SuperString(std::string text);        // NOLINT(google-explicit-constructor): text is text
    SuperString(std::string_view text);   // NOLINT(google-explicit-constructor)
    SuperString(const char* textZ);       // NOLINT(google-explicit-constructor)

    [[nodiscard]] const std::string& UTF8() const noexcept;
    [[nodiscard]] const char* CString() const noexcept { return UTF8().c_str(); }
    operator std::string_view() const noexcept { return UTF8(); }   // NOLINT(google-explicit-constructor)
    [[nodiscard]] bool Empty() const noexcept { return UTF8().empty(); }
    /** Number of code points. */
    [[nodiscard]] std::size_t Length() const;

    // Case and form, in no particular language (the root locale), so that a file reads alike on every machine.
    [[nodiscard]] SuperString Lowercased() const;
    [[nodiscard]] SuperString Uppercased() const;
    /** The first letter of each word in its title form, the others as they are. A word begins with a letter that does
        not follow a letter, nor an apostrophe inside a word: "o'neil" has one word, "ac/dc", "10cc" and "r.e.m." more. */
    [[nodiscard]] SuperString Capitalized() const;
    /** Without white space (of any script) at both ends. */
    [[nodiscard]] SuperString Trimmed() const;
    [[nodiscard]] SuperString Normalized(NormalForm form) const;
    /** Without the marks over and under letters: "Beyoncé" gives "Beyonce". */
    [[nodiscard]] SuperString WithoutDiacritics() const;
    /** `from` is searched as it is written, from the left, without overlap. An empty `from` changes nothing. */
    [[nodiscard]] SuperString Replaced(std::string_view from, std::string_view to) const;

    /** The order of the user's language, for lists that people read: -1, 0 or 1. */
    [[nodiscard]] int Collate(const SuperString& other) const;
    /** The same order, upper and lower case being equal. */
    [[nodiscard]] int CollateNoCase(const SuperString& other) const;
    /** Full case folding, code point by code point, no language. */
    [[nodiscard]] bool EqualNoCase(const SuperString& other) const;

    /** `bytes` in `encoding`. paramErr, and `text` as it was, when they are no text of that encoding. */
    static OSErr FromBytes(std::span<const std::byte> bytes, TextEncoding encoding, SuperString& text);
    /** paramErr, and `bytes` as it was, when a character has no place in `encoding`. kUTF16 writes big-endian with a
        mark. */
    OSErr ToBytes(TextEncoding encoding, std::vector<std::byte>& bytes) const;
    /** The encoding of 8-bit text whose source does not name one. Set once at start; asked for before, it logs and is
        UTF-8. */
    static void SetDefaultEncoding(TextEncoding encoding) noexcept;
    [[nodiscard]] static TextEncoding DefaultEncoding();

    /** Four characters, in MacRoman. */
    [[nodiscard]] static SuperString FromOSType(OSType code);
    /** paramErr unless the text is four characters of MacRoman. */
    OSErr ToOSType(OSType& code) const;

    /** By bytes, which for UTF-8 is by code points: for maps and files, not for people. */
    friend bool operator==(const SuperString& a, const SuperString& b) noexcept { return a.UTF8() == b.UTF8(); }
    friend std::strong_ordering operator<=>(const SuperString& a, const SuperString& b) noexcept {
        return a.UTF8().compare(b.UTF8()) <=> 0;
    }
    friend bool operator==(const SuperString& a, const char* bZ) noexcept { return a.UTF8() == bZ; }
    friend std::ostream& operator<<(std::ostream& out, const SuperString& text) { return out << text.UTF8(); }

private:
    std::shared_ptr<const std::string> i_textRef;   // null for the empty text
};
