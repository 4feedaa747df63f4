#include "Cli/CliWords.h"

const std::string* CliWords::Text(std::string_view option) const {
    const auto it = values.find(option);
    return it == values.end() ? nullptr : &it->second;
}
