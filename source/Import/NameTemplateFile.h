#pragma once
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Library/NameParser.h"

/** A line of "Name Parser Templates.txt": the template, and behind a tab an example for people. */
struct NameTemplateLine {
    NameParser parser;
    std::string remark;
};
/** The lines of such a file; one whose template is none is logged and left out. */
[[nodiscard]] std::vector<NameTemplateLine> ReadNameTemplates(std::string_view text);
/** Those of the user's own file, which lies with his preferences; of the file among the resources when he has none, or none that
    can be read. Blocks as a disc does. */
[[nodiscard]] std::vector<NameTemplateLine> LoadNameTemplates(const std::filesystem::path& preferences,
                                                              const std::filesystem::path& resources);
