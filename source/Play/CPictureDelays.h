#pragma once
#include <string_view>

class CCFPrefDictionary;

/** How much later than its sound a picture is shown, for each audio output by its name: what plays by radio, or through
    a television, is heard late.
    Units    milliseconds; negative shows the picture earlier. At most kMost either way, whatever the file says.
    Threads  as the preferences, which outlive this. */
class CPictureDelays {
public:
    static constexpr long kMost = 2000;

    explicit CPictureDelays(CCFPrefDictionary& preferences) : i_preferences(preferences) {}
    /** 0 for a device that is not known. */
    [[nodiscard]] long Of(std::string_view device) const;
    /** Remembered; 0 is forgotten. */
    void Set(std::string_view device, long milliseconds);

private:
    CCFPrefDictionary& i_preferences;
};
