#include "Audio/CDeviceNews.h"

#include "Core/AlertHook.h"
#include "Core/CLog.h"

namespace {
constexpr const char* kSilent_Z = "The songs go on without sound. An output is looked for each second.";
}

bool CDeviceNews::IsNews(const std::string& wanted, const std::string& instead) {
    const std::string news = wanted + "\n" + instead;
    return i_told.Exchange(news) != news;
}

void CDeviceNews::Missing(const std::string& wanted, const std::string& instead) {
    if (!IsNews(wanted, instead)) return;
    if (instead.empty())
        ShowAlert(
            "There was a problem initializing audio output, check your audio output device. Are your speakers plugged "
            "in?",
            "The audio output “" + wanted + "” is not there, nor any other. " + kSilent_Z);
    else
        ShowAlert("The audio output “" + wanted + "” is not there.",
                  "The songs play through “" + instead + "” until it is back.");
}

void CDeviceNews::Gone(const std::string& lost, const std::string& wanted, const std::string& instead) {
    if (!IsNews(wanted, instead)) return;
    ShowAlert("The audio output “" + lost + "” has gone.",
              instead.empty()   ? kSilent_Z
              : instead == lost ? "The song goes on with another one, as the system has it."
                                : "The song goes on with “" + instead + "”.");
}

void CDeviceNews::Plays(const std::string& wanted) {
    if (!i_told.Exchange({}).empty()) LogF("audio output: \"%s\" plays again", wanted.c_str());
}
