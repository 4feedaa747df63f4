#include "Meta/MetaKey.h"

std::string MetaKeyText(MetaKey key) {
    const auto code = static_cast<std::uint32_t>(key);
    return {static_cast<char>(code >> 24), static_cast<char>(code >> 16), static_cast<char>(code >> 8),
            static_cast<char>(code)};
}
