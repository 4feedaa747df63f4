#pragma once
#include <string>
#include <string_view>

/** A title as the library keeps it: Unicode NFC, white space of any kind as one blank, none at the ends, no control
    characters. Bytes that are no UTF-8 become U+FFFD. Doing it twice changes nothing. */
[[nodiscard]] std::string NormalizedTitle(std::string_view text);

/** An artist's name with its leading article at the end: "The Who" gives "Who, The". "The", "La", "Las", "El", "Los"
    are tried once each, in this order. */
[[nodiscard]] std::string ArticleAtEnd(std::string_view text);
