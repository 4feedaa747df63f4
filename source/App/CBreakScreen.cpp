#include "App/CBreakScreen.h"

#include "App/CT_ReadBreakPicture.h"
#include "Core/CAlerts.h"
#include "Core/CApp.h"
#include "Core/CLog.h"
#include "Graphics/CBreakOverlay.h"
#include "Graphics/CGraphicsPorts.h"
#include "Graphics/COffscreen.h"

CBreakScreen::CBreakScreen(CGraphicsPorts& ports) : i_ports(ports), i_self(std::make_shared<CBreakScreen*>(this)) {}

CBreakScreen::~CBreakScreen() {
    *i_self = nullptr;
    Show(nullptr);
}

void CBreakScreen::Follow(const CCFPrefDictionary& preferences) {
    std::filesystem::path file = preferences.GetString("Break Picture").UTF8();
    if (file == i_file) return;
    i_file = std::move(file);
    i_tellB = gApp != nullptr && gApp->IsAppReady();
    if (i_file.empty()) {
        Show(nullptr);
    } else if (CT_Preemptive::Start(std::make_unique<CT_ReadBreakPicture>(i_file, i_self)) == 0) {
        Take(i_file, nullptr, memFullErr);
    }
}

void CBreakScreen::Take(const std::filesystem::path& file, std::unique_ptr<COffscreen> picture, OSErr err) {
    if (file != i_file) return;   // another one was chosen meanwhile
    if (picture != nullptr) {
        Show(std::make_unique<CBreakOverlay>(std::move(picture)));
        return;
    }
    Show(nullptr);
    if (Failed(LogStep(err, "reading the break picture", file)) && i_tellB)
        MessageAlert("The break picture could not be read: " + file.filename().string(), ErrorText(err));
}

void CBreakScreen::Show(std::unique_ptr<CBreakOverlay> overlay) {
    i_ports.SetBackdrop(overlay.get());
    i_overlay = std::move(overlay);
}
