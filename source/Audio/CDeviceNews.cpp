#include "Audio/CDeviceNews.h"

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/Localize.h"

namespace {
constexpr const char* kSilent_Z = N_("The songs go on without sound. An output is looked for each second.");
}

bool CDeviceNews::IsNews(const std::string& wanted, const std::string& instead) {
    const std::string news = wanted + "\n" + instead;
    return i_told.Exchange(news) != news;
}

void CDeviceNews::Missing(const std::string& wanted, const std::string& instead) {
    if (!IsNews(wanted, instead)) return;
    if (instead.empty())
        ShowAlert(
            Localize("There was a problem initializing audio output, check your audio output device. Are your speakers "
                     "plugged in?"),
            Localize("The audio output “%1” is not there, nor any other.", {wanted}) + " " + Localize(kSilent_Z));
    else
        ShowAlert(Localize("The audio output “%1” is not there.", {wanted}),
                  Localize("The songs play through “%1” until it is back.", {instead}));
}

void CDeviceNews::Gone(const std::string& lost, const std::string& wanted, const std::string& instead) {
    if (!IsNews(wanted, instead)) return;
    ShowAlert(Localize("The audio output “%1” has gone.", {lost}),
              instead.empty()   ? Localize(kSilent_Z)
              : instead == lost ? Localize("The song goes on with another one, as the system has it.")
                                : Localize("The song goes on with “%1”.", {instead}));
}

void CDeviceNews::Plays(const std::string& wanted) {
    if (!i_told.Exchange({}).empty()) LogF("audio output: \"%s\" plays again", wanted.c_str());
}
