#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "Cli/Command.h"
#include "Platform/Heap.h"

int main(int countL, char** wordsZ) {
    ShareHeaps();
    const std::vector<std::string> words(wordsZ + (countL > 0 ? 1 : 0), wordsZ + countL);
    try {
        return RunCommand(words, std::cout, std::cerr);
    } catch (const std::exception& fault) {
        std::cerr << "vopla-cli: " << fault.what() << '\n';
        return 1;
    }
}
