#pragma once
#include "Graphics/CGraphicsPort.h"

class CCFPrefDictionary;

/** The shape of the picture as the user wants it. Any thread. */
[[nodiscard]] FrameShape ReadFrameShape(const CCFPrefDictionary& prefs);
void KeepFrameShape(CCFPrefDictionary& prefs, FrameShape shape);
