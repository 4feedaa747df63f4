#include "Widgets/DisplayAbilities.h"

#include <xcb/xcb.h>
#include <QCoreApplication>
#include <QGuiApplication>

#include <cstdlib>
#include <memory>

namespace {

QString Words(const char* textZ) { return QCoreApplication::translate("DisplayAbilities", textZ); }

struct Free_ {
    void operator()(void* memoryP) const { std::free(memoryP); }   // what xcb answers with is malloc's
};
template <class Reply>
using XcbReply = std::unique_ptr<Reply, Free_>;

/** Whether somebody mixes the windows of the X display's first screen: the owner of a selection of that name. */
bool IsComposited(xcb_connection_t* connectionP) {
    constexpr std::string_view kName = "_NET_WM_CM_S0";
    const XcbReply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
        connectionP, xcb_intern_atom(connectionP, 1, static_cast<std::uint16_t>(kName.size()), kName.data()), nullptr));
    if (atom == nullptr || atom->atom == XCB_NONE) return false;
    const XcbReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connectionP, xcb_get_selection_owner(connectionP, atom->atom), nullptr));
    return owner != nullptr && owner->owner != XCB_NONE;
}

}   // namespace

DisplayAbilities AbilitiesOfDisplay() {
    const QString platform = QGuiApplication::platformName();
    if (platform == "xcb") {
        const auto* const x11P = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
        const bool mixedB = x11P != nullptr && IsComposited(x11P->connection());
        return {mixedB, mixedB, true,
                mixedB ? QString() : Words("Without a compositor windows cannot be seen through.")};
    }
    if (platform.startsWith("wayland"))
        return {false, true, false, Words("Wayland does not let a program fade its windows or keep them on top.")};
    return {false, false, false,
            Words("This display system cannot fade windows, see through them or keep them on top.")};
}
