#pragma once
#include <string>
#include <string_view>

#include "Library/LibraryIDs.h"
#include "Platform/CAudioOutput.h"
#include "Play/CPlayPlace.h"
#include "Play/ShowFacts.h"

class CCFPrefDictionary;
class CGraphicsPorts;
class CSongDatabase;
class CSongPlay;
class CUserInterface;

/** What playing asks of the application around it. Main thread; outlives the CPlayControl that it is given to. */
class CPlayHost {
public:
    virtual ~CPlayHost() = default;
    [[nodiscard]] virtual CSongDatabase& Database() = 0;
    [[nodiscard]] virtual CCFPrefDictionary& Preferences() = 0;
    [[nodiscard]] virtual CUserInterface& Ui() = 0;
    /** What the songs of this show share. Any thread. */
    [[nodiscard]] const ShowFactsRef& Show() const noexcept { return i_show; }
    /** How this list is gone through. */
    [[nodiscard]] virtual std::unique_ptr<CPlayOrder> OrderOf(PlaylistID list) {
        return std::make_unique<CPlayPlace>(Database(), list);
    }
    /** A new output for the device of this name, not yet opened. */
    [[nodiscard]] virtual AudioOutputChoice MakeOutput(const std::string& device) { return MakeAudioOutput(device); }

    /** A song whose device is not there plays through another one, without any at the pace that its sound would have;
        else it cannot be played. */
    [[nodiscard]] virtual bool PlaysOnAnyDevice() const { return false; }
    /** Where songs show their picture. */
    [[nodiscard]] virtual CGraphicsPorts& Ports() = 0;
    /** Its zip is being unpacked right now. */
    [[nodiscard]] virtual bool IsUnpacking(SongID /*song*/) { return false; }
    /** How much louder than it lies in its file a song is to be heard; 1 leaves it alone. */
    [[nodiscard]] virtual float GainOf(SongID /*song*/) { return 1; }
    /** A song was sung to its end; the next one comes after this. */
    virtual void SongEnded(const CSongPlay& /*play*/) {}
    /** A song could not be played, or not to its end; what comes next, if anything, has begun, and the user is told. */
    virtual void SongFailed(const CSongPlay& /*play*/, OSErr /*err*/) {}
    /** A line for the room: what was skipped, how far the picture slips. */
    virtual void ShowMessage(std::string_view /*text*/) {}
    /** Nothing is selected any more: the user was asked. */
    virtual void Deselect() {}

private:
    const ShowFactsRef i_show = std::make_shared<ShowFacts>();
};
