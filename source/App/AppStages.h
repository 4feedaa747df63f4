#pragma once
#include <span>
#include <string_view>

#include "App/CApp.h"
#include "App/CAppParts.h"

/** A stage of the start or of the quit: the words that it is logged and shown by, and what is done. The order is the
    contract: what stands further down may rely on all above it. */
struct AppStage {
    std::string_view words;                   // empty: a silent one
    void (*actP)(CApp& app) = [](CApp&) {};   // as is: of a subsystem that is not there yet
};

[[nodiscard]] std::span<const AppStage> StartStages() noexcept;
[[nodiscard]] std::span<const AppStage> QuitStages() noexcept;

// The acts, as the tables name them: kMake<CAppPlay>, kAct<&CAppLibrary::Load>, kDrop<CAppPlay>.

template <class... Parts>
inline constexpr auto kMake = [](CApp& app) { (app.Parts().Make<Parts>(app), ...); };

/** In the order in which they stand. */
template <class... Parts>
inline constexpr auto kDrop = [](CApp& app) { (app.Parts().Drop<Parts>(), ...); };

/** Nothing where the part does not stand: the start may have ended before it. */
template <auto kMember>
inline constexpr auto kAct = []<class Part>(void (Part::*)()) {
    return [](CApp& app) {
        if (Part* const partP = app.Parts().Find<Part>(); partP != nullptr) (partP->*kMember)();
    };
}(kMember);
