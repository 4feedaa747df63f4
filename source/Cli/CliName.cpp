#include "Cli/CliName.h"

#include "Core/Conform.h"
#include "Core/JSONWriter.h"

int RunName(const CliContext& context, std::span<const std::string> words) {
    constexpr std::string_view kName_Usage = "usage: name conform TEXT";
    if (words.empty() || words[0] != "conform") return CliUsage(context, kName_Usage);
    words = words.subspan(1);
    const bool freeB = !words.empty() && words[0] == "--";   // a text that begins with "-" may follow
    if (freeB) words = words.subspan(1);
    if (words.size() != 1 || (!freeB && words[0].starts_with('-'))) return CliUsage(context, kName_Usage);
    const SuperString text = Conform(words[0], {.lowerSmallWordsB = true});
    context.out << "{\"text\":" << JSONString(text) << "}\n";
    return 0;
}
