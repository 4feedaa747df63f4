#include "App/CAppMeta.h"

#include "App/CApp.h"
#include "Core/Localize.h"

namespace {

constexpr BoolPref kPref_MoveArticles = "Move 'The' to end of Artits title";

MetaSetup SetupOf(const CPreferences& prefs) {
    MetaSetup setup;
    setup.traits.translate = [](const char* textZ) { return SuperString(Localize(textZ)); };
    setup.traits.showSingerIDB = prefs.GetBool("Show Singer ID");
    setup.moveArticlesB = prefs.GetBool(kPref_MoveArticles);
    setup.software = CApp::DisplayName();
    return setup;
}

}   // namespace

CAppMeta::CAppMeta(CApp& app) : i_manager(SetupOf(app.Prefs())) {
    i_follower = app.Prefs().Follow(
        [this, &prefs = app.Prefs()] { i_manager.SetMoveArticles(prefs.GetBool(kPref_MoveArticles)); });
}
