#include "Audio/CT_AudioRender.h"

#include "Audio/CAudioUnitChain.h"

OSErr CT_AudioRender::Operate(OSErr) {
    i_chain.RenderLoop();
    return noErr;
}
