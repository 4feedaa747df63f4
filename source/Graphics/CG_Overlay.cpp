#include "Graphics/CG_Overlay.h"

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Graphics/CGraphicsPort.h"
#include "Threads/ThreadInfo.h"

CG_Overlay::CG_Overlay(std::string name) : i_name(std::move(name)) {
    Assert(IsMainThread());
    LogF("creating overlay <%s>\n", i_name.c_str());
}

CG_Overlay::~CG_Overlay() {
    for (CGraphicsPort* const portP : Ports()) portP->Remove(*this);
    LogF("deleting overlay <%s>\n", i_name.c_str());
}
