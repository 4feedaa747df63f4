#include <cstring>

#include "Core/CLog.h"

namespace {

struct ErrorRow {
    int codeL;
    const char* textZ;
};

constexpr ErrorRow kError_Texts[] = {
    {0, "Success"},
    {-1, "Already Reported This Error"},
    {-17, "Control error (debug)"},
    {-27, "Operation Aborted"},
    {-34, "Disk is full"},
    {-35, "No Such Volume"},
    {-37, "Bad file name (eg: no colons allowed)"},
    {-38, "File Not Open"},
    {-39, "End of File"},
    {-43, "File Not Found"},
    {-48, "Duplicate File Name"},
    {-49, "File already open with write permission"},
    {-50, "Parameter Error"},
    {-51, "Bad File Reference Number"},
    {-128, "User Canceled"},
    {-1753, "Script Error"},
    {-2098, "Component not thread safe"},
    {-5604, "Object (menu, window, control) Property Not Found"},
    {-10871, "Invalid QuickTime (MIDI?) File"},
    {-30393, "Network Timeout"},
    {-30394, "Network Host Failed to Provide Data"},
};

}   // namespace

std::string ErrorText(int codeL) {
    for (const auto& row : kError_Texts)
        if (row.codeL == codeL) return row.textZ;
    if (codeL < 0) return "Mac OS error";
    const char* const textZ = ::strerrordesc_np(codeL);   // the system's words, in the language of all others here
    return textZ == nullptr ? "Unknown error" : textZ;
}
