#pragma once
#include <memory>
#include <string>
#include <string_view>

/** The order of texts that people read: that of a language, upper and lower case being equal, numbers inside a text as
    numbers ("Track 9" before "Track 10").
    Threads  any.
    Errors   a language that ICU does not know sorts by the root's rules; without any rules, by bytes. */
class CCollation {
public:
    /** By an ICU name ("de", "sv_SE"); empty is the user's language. */
    explicit CCollation(const std::string& locale = {});
    ~CCollation();
    CCollation(const CCollation&) = delete;
    CCollation& operator=(const CCollation&) = delete;

    /** That of the user's language; made once. */
    [[nodiscard]] static const CCollation& User();

    /** -1, 0 or 1. Bytes that are no UTF-8 are read as U+FFFD. */
    [[nodiscard]] int Compare(std::string_view a, std::string_view b) const;
    /** Bytes whose plain order (as unsigned) is the order of the texts: for sorting many. Equal texts, equal keys. */
    [[nodiscard]] std::string SortKey(std::string_view text) const;
    /** The same behind what stands in `keys`; `wide` is room to work in, kept from text to text. No byte of a key is 0. */
    void AppendSortKey(std::string_view text, std::string& keys, std::u16string& wide) const;

private:
    struct Rules;
    std::unique_ptr<Rules> i_rules;
};
