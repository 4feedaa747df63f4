#include "Core/SmallExtension.h"

std::string SmallExtension(const std::filesystem::path& name) {
    std::string text = name.extension().string();
    if (!text.empty()) text.erase(0, 1);
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}
