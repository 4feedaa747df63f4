#pragma once
#include <memory>

#include "App/CAppPart.h"
#include "Meta/CMetaManager.h"
#include "Values/CPreferences.h"

class CApp;

/** What all values have in common; made before the library, gone after it. */
class CAppMeta final : public CAppPart {
public:
    explicit CAppMeta(CApp& app);

private:
    CMetaManager i_manager;
    std::unique_ptr<CPrefFollower> i_follower;
};
