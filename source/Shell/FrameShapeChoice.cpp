#include "Shell/FrameShapeChoice.h"

#include "Values/CCFPrefDictionary.h"

namespace {
constexpr BoolPref kPref_Wide = "16x9 aspect ratio";
constexpr BoolPref kPref_Narrow = "4x3 aspect ratio";
}   // namespace

FrameShape ReadFrameShape(const CCFPrefDictionary& prefs) {
    if (prefs.GetBool(kPref_Wide)) return FrameShape::k16x9;
    return prefs.GetBool(kPref_Narrow) ? FrameShape::k4x3 : FrameShape::kPicture;
}

void KeepFrameShape(CCFPrefDictionary& prefs, FrameShape shape) {
    prefs.SetBool(kPref_Wide, shape == FrameShape::k16x9);
    prefs.SetBool(kPref_Narrow, shape == FrameShape::k4x3);
}
