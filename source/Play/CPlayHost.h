#pragma once
#include <string>
#include <string_view>

#include "Platform/CAudioOutput.h"

class CCFPrefDictionary;
class CPixels;
class CPlayWindow;
class CSongDatabase;
class CUserInterface;

/** What playing asks of the application around it. Main thread; outlives the CPlayControl that it is given to. */
class CPlayHost {
public:
    virtual ~CPlayHost() = default;
    [[nodiscard]] virtual CSongDatabase& Database() = 0;
    [[nodiscard]] virtual CCFPrefDictionary& Preferences() = 0;
    [[nodiscard]] virtual CUserInterface& Ui() = 0;
    [[nodiscard]] virtual bool IsQuitting() const { return false; }
    /** A new output for the device of this name, not yet opened. */
    [[nodiscard]] virtual AudioOutputChoice MakeOutput(const std::string& device) { return MakeAudioOutput(device); }

    /** The video window, as far as playing moves it; null without one. */
    [[nodiscard]] virtual CPlayWindow* PlayWindow() { return nullptr; }
    /** A song with a picture begins. */
    virtual void ShowVideo() {}
    /** The picture of now; its pixels stay where they are until ClearPicture. */
    virtual void ShowPicture(const CPixels& /*picture*/, bool /*forceB*/) {}
    virtual void ClearPicture() {}
    /** A picture was drawn now. */
    virtual void NoteDrawn() {}
    /** A line for the room: what was skipped, how far the picture slips. */
    virtual void ShowMessage(std::string_view /*text*/) {}
    /** Nothing is selected any more: the user was asked. */
    virtual void Deselect() {}
};
