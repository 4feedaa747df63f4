#include "Meta/CDataTraits_Numbers.h"

#include "Core/SizeForms.h"
#include "Meta/TimeCode.h"

SuperString CDataTraits_Track::IntegerToDisplay(long value) const {
    return value == 0 ? SuperString() : CDataTraits::IntegerToDisplay(value);
}

SuperString CDataTraits_Size::IntegerToDisplay(long value) const {
    // A size has 32 bits without a sign; a file of more than 2 GB is negative here.
    return value == 0 ? SuperString() : SizeText(static_cast<std::uint32_t>(value));
}

SuperString CDataTraits_Start::IntegerToDisplay(long value) const { return CDFrameText(value); }

SuperString CDataTraits_Duration::IntegerToDisplay(long value) const {
    return value == 0 ? SuperString() : DurationOf300ths(value);
}

SuperString CDataTraits_TimeCode::IntegerToDisplay(long value) const {
    return value == 0 ? SuperString() : TimeCodeText(MillisecondsOf300ths(value));
}

SuperString CDataTraits_TimeCode::ToDisplayFromString(const SuperString& text) const {
    const auto milliseconds = ParseTimeCode(text);
    return milliseconds ? SuperString(std::to_string(In300ths(*milliseconds))) : text;
}
