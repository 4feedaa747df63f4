#include "Platform/CAudioOutput.h"

#include "Platform/CAudioOutput_File.h"
#include "Platform/CAudioOutput_Null.h"
#include "Platform/CAudioOutput_SDL.h"

AudioOutputChoice MakeAudioOutput(std::string_view text) {
    constexpr std::string_view kDisk = "disk:";
    if (text == "dummy") return {std::make_unique<CAudioOutput_Null>(), std::string(kAudioOutput_Default)};
    if (text.substr(0, kDisk.size()) == kDisk)
        return {std::make_unique<CAudioOutput_File>(text.substr(kDisk.size())), std::string(kAudioOutput_Default)};
    return {std::make_unique<CAudioOutput_SDL>(), std::string(text.empty() ? kAudioOutput_Default : text)};
}
