#include <iostream>
#include <string>
#include <vector>

#include "App/CApp.h"
#include "Platform/Heap.h"
#include "Shell/Options.h"
#include "Shell/Process.h"
#include "Widgets/CGraphicsCard.h"

int main(int countL, char** wordsZ) {
    ShareHeaps();
    const auto options = ReadOptions(std::vector<std::string>(wordsZ + 1, wordsZ + countL));
    if (!options.has_value()) {
        std::cerr << kOptions_Usage;
        return 2;
    }
    if (options->helpB) std::cout << kOptions_Usage << kOptions_Help;
    if (options->versionB) std::cout << CApp::DisplayName() << '\n';
    if (options->helpB || options->versionB) return 0;
    if (options->askCardB) return CGraphicsCard::Tell(countL, wordsZ);
    return RunProcess(*options, countL, wordsZ);
}
