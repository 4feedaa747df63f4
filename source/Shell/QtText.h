#pragma once
#include <QString>
#include <string_view>

/** The engine's UTF-8 as the desktop's text. */
[[nodiscard]] inline QString QtText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
