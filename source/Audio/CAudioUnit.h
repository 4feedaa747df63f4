#pragma once
#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "Core/OSType.h"
#include "Platform/OSErr.h"

/** The form of the samples at one side of a unit, in the ten words of the old description. */
struct AudioStreamForm {
    double rateF = 0;
    OSType formatID{};
    std::uint32_t flagsL = 0, bytesPerPacketL = 0, framesPerPacketL = 0, bytesPerFrameL = 0, channelsL = 0, bitsL = 0;
};

/** A member of a CAudioUnitChain: what it is called and what was set on it. On this system no unit works on samples by
    itself: parameters and properties are kept, and the output is a CAudioOutput.
    Threads  one at a time. */
class CAudioUnit {
public:
    CAudioUnit(std::string name, OSType type, OSType subtype)
        : i_name(std::move(name)), i_type(type), i_subtype(subtype) {}
    virtual ~CAudioUnit() = default;
    CAudioUnit(const CAudioUnit&) = delete;
    CAudioUnit& operator=(const CAudioUnit&) = delete;

    [[nodiscard]] const std::string& Name() const noexcept { return i_name; }
    [[nodiscard]] OSType Type() const noexcept { return i_type; }
    [[nodiscard]] OSType Subtype() const noexcept { return i_subtype; }
    virtual void SetParameter(std::uint32_t id, float valueF) { i_parameters[id] = valueF; }
    [[nodiscard]] float Parameter(std::uint32_t id) const {
        const auto it = i_parameters.find(id);
        return it == i_parameters.end() ? 0.0F : it->second;
    }
    AudioStreamForm i_input, i_output;

private:
    const std::string i_name;
    const OSType i_type, i_subtype;
    std::map<std::uint32_t, float> i_parameters;
};
