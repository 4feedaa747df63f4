#include "Cli/CliContext.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include "Core/FaultText.h"
#include "Values/CPreferences.h"
#include "Values/JSONWriter.h"

namespace {

/** A text of many lines would be taken for many errors. */
std::string OneLine(std::string_view text) {
    std::string line(text);
    std::ranges::replace_if(
        line, [](char c) { return c == '\n' || c == '\r'; }, ' ');
    return line;
}

void Tell(const CliContext& context, OSErr status, std::string_view text) {
    const std::string line = OneLine(text);
    if (context.jsonB)
        context.err << "{\"error\":" << JSONString(line) << ",\"status\":" << Number(status) << "}\n";
    else
        context.err << "vopla-cli: " << line << "\n";
}

}   // namespace

std::filesystem::path CliPrefsFolder(const CliContext& context) {
    if (!context.root.empty()) return context.root / "config" / "Vopla";
    const char* configZ = std::getenv("XDG_CONFIG_HOME");
    if (configZ != nullptr && configZ[0] == '/') return std::filesystem::path(configZ) / "Vopla";
    const char* homeZ = std::getenv("HOME");
    return std::filesystem::path(homeZ == nullptr ? "." : homeZ) / ".config" / "Vopla";
}

int CliFail(const CliContext& context, OSErr status, std::string_view text) {
    std::string line(text);
    if (!context.jsonB) line += " (" + std::to_string(Number(status)) + ")";
    Tell(context, status, line);
    return 1;
}

int CliFailFile(const CliContext& context, OSErr status, const std::filesystem::path& file) {
    return CliFail(context, status, file.string() + ": " + FaultWords(status, file));
}

int CliFailStep(const CliContext& context, OSErr status, std::string_view step) {
    return CliFail(context, status, std::string(step) + ": " + FaultWords(status, FaultOf::kStep));
}

int CliUsage(const CliContext& context, std::string_view text) {
    Tell(context, paramErr, text);
    return 2;
}

void CliWarn(const CliContext& context, std::string_view text) {
    if (context.jsonB)
        context.err << "{\"warning\":" << JSONString(OneLine(text)) << "}\n";
    else
        context.err << "vopla-cli: " << OneLine(text) << "\n";
}

std::unique_ptr<CPreferences> CliPreferences(const CliContext& context) {
    PrefsOptions options;
    options.saveAtEndB = false;
    return std::make_unique<CPreferences>(PrefsFilesFor(CliPrefsFolder(context)), std::move(options));
}
