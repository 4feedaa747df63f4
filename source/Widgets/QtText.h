#pragma once
#include <QString>
#include <string_view>

/** The engine's UTF-8 as the desktop's text. */
[[nodiscard]] inline QString QtText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
/** A tool tip of words that are not ours, the names of files and songs: shown as they are, also when they look like marks. */
[[nodiscard]] QString PlainToolTip(const QString& text);
