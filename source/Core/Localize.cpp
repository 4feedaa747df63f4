#include "Core/Localize.h"

#include <libintl.h>
#include <cstdlib>

namespace {

constexpr const char* kDomainZ = "vopla";

std::string WithValues(std::string_view text, std::initializer_list<std::string_view> values) {
    std::string whole;
    for (std::size_t n = 0; n < text.size(); ++n) {
        const std::size_t place =
            text[n] == '%' && n + 1 < text.size() ? static_cast<std::size_t>(text[n + 1] - '1') : 9;
        if (place < values.size()) {
            whole += values.begin()[place];
            ++n;
        } else {
            whole += text[n];
        }
    }
    return whole;
}

}   // namespace

std::string Localize(const char* textZ, const char* /*commentZ*/) {
    return *textZ == '\0' ? std::string()
                          : ::dgettext(kDomainZ, textZ);   // the empty text is the catalogue's own heading
}

std::string Localize(const char* textZ, std::initializer_list<std::string_view> values, const char* commentZ) {
    return WithValues(Localize(textZ, commentZ), values);
}

std::string LocalizeCount(const char* oneZ, const char* manyZ, std::uint64_t numberL) {
    return WithValues(::dngettext(kDomainZ, oneZ, manyZ, numberL), {std::to_string(numberL)});
}

void ChooseCatalogue(const std::filesystem::path& folder) {
    const char* const elsewhereZ = std::getenv("TEXTDOMAINDIR");
    ::bindtextdomain(kDomainZ, elsewhereZ != nullptr ? elsewhereZ : folder.c_str());
    ::bind_textdomain_codeset(kDomainZ, "UTF-8");
}
