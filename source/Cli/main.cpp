#include <iostream>
#include <string>
#include <vector>

#include "Cli/CliCdg.h"

int main(int argc, char** argv) {
    std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
    CliContext context{.root = {}, .jsonB = false, .out = std::cout, .err = std::cerr};
    if (!words.empty() && words[0] == "--json") {
        context.jsonB = true;
        words.erase(words.begin());
    }
    if (!words.empty() && words[0] == "cdg") return RunCdg(context, std::span(words).subspan(1));
    return CliUsage(context, "usage: vopla-cli [--json] cdg ...");
}
