#include "Import/NameTemplateFile.h"

#include <algorithm>

#include "Core/CLog.h"
#include "Files/CDataFork.h"

namespace {
constexpr std::uint64_t kFile_MaxBytes = 1 << 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";   // of some editors
}   // namespace

std::vector<NameTemplateLine> ReadNameTemplates(std::string_view text) {
    std::vector<NameTemplateLine> lines;
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        const std::size_t tab = std::min(line.find('\t'), line.size());
        if (tab == 0) continue;   // a remark alone
        if (auto parser = NameParser::Of(line.substr(0, tab)))
            lines.push_back({std::move(*parser), std::string(line.substr(std::min(tab + 1, line.size())))});
        else
            LogF("### Error no template: <%s>", std::string(line.substr(0, tab)).c_str());
    }
    return lines;
}

std::vector<NameTemplateLine> LoadNameTemplates(const std::filesystem::path& preferences,
                                                const std::filesystem::path& resources) {
    for (const std::filesystem::path& folder : {preferences, resources}) {
        const CFileRef file(folder / "Name Parser Templates.txt");
        std::string text;
        const OSErr err = ReadWholeFile(file, text, kFile_MaxBytes);
        if (!Failed(err)) return ReadNameTemplates(text);
        if (err != fnfErr) (void)LogStep(err, "reading name templates", file.GetPath());
    }
    return {};
}
