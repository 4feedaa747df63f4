#include <iostream>
#include <string>
#include <vector>

#include "Platform/Heap.h"
#include "Widgets/CGraphicsCard.h"
#include "Shell/Options.h"
#include "Shell/Process.h"

int main(int countL, char** wordsZ) {
    ShareHeaps();
    const auto options = ReadOptions(std::vector<std::string>(wordsZ + 1, wordsZ + countL));
    if (!options.has_value() || options->helpB) {
        (options.has_value() ? std::cout : std::cerr) << kOptions_Usage;
        return options.has_value() ? 0 : 2;
    }
    if (options->askCardB) return CGraphicsCard::Tell(countL, wordsZ);
    return RunProcess(*options, countL, wordsZ);
}
