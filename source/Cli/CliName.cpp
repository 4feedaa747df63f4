#include "Cli/CliName.h"

#include "Cli/CliCommand.h"
#include "Core/Conform.h"
#include "Values/JSONWriter.h"

int ConformName(const CliCall& call) {
    const SuperString text = Conform(call.words.arguments[0], {.lowerSmallWordsB = true});
    call.context.out << "{\"text\":" << JSONString(text) << "}\n";
    return 0;
}
