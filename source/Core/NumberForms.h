#pragma once
#include <optional>
#include <string>
#include <string_view>

// Numbers with a fraction, as texts. One form is stored, logged and read by programs: it has a point, whatever the
// language. People are shown the mark of their language, and may write either.

/** The program's form: "1.50" for 1.5 with two decimals. Any thread. */
[[nodiscard]] std::string FixedText(double value, int decimals);

/** What people have between a number's whole and its fraction; "." until the desktop says otherwise. At start, before
    other threads. */
void SetDecimalMark(std::string mark);
[[nodiscard]] const std::string& DecimalMark() noexcept;
/** The form for people. Any thread. */
[[nodiscard]] std::string ShownNumber(double value, int decimals);

/** The number at the front of what a person wrote, as in "1,5" and "1.5 (slower)"; nothing when there is none. Points
    and commas: the only one, or the last when both are there, stands before the fraction; all others part thousands. */
[[nodiscard]] std::optional<double> ReadPersonsNumber(std::string_view text);
/** The same when the whole text is a number, but for blanks around it. */
[[nodiscard]] std::optional<double> ReadWholePersonsNumber(std::string_view text);
