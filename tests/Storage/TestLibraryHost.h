#pragma once
#include "Platform/CUserInterface_Scripted.h"
#include "Storage/CLibraryHost.h"

/** A load whose questions have the answers of a script. */
class TestLibraryHost final : public CLibraryHost {
public:
    explicit TestLibraryHost(CUserInterface_Scripted& ui) : i_ui(ui) {}
    Answer Ask(const Question& question) override { return i_ui.Ask(question); }

private:
    CUserInterface_Scripted& i_ui;
};
