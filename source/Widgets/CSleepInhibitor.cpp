#include "Widgets/CSleepInhibitor.h"

#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QVariantMap>
#include <utility>

#include "Core/CLog.h"

namespace {
constexpr const char* kWho = "Vopla";
constexpr const char* kWhy = "A song plays";
constexpr uint kPortal_Idle = 8;
}   // namespace

/** One way to keep the display on. `holds` is the signature of an answer that does; `release` gives that back, an empty
    method means by closing the file that came with it. */
struct CSleepInhibitor::Way {
    bool systemB;
    const char *serviceZ, *pathZ, *interfaceZ;
    QVariantList (*arguments)();
    const char* holdsZ;
    const char *releaseInterfaceZ, *releaseZ;
};

const CSleepInhibitor::Way CSleepInhibitor::kWays[] = {
    {false, "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver",
     [] {
         return QVariantList{QString(kWho), QString(kWhy)};
     },
     "u", "org.freedesktop.ScreenSaver", "UnInhibit"},
    {false, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Inhibit",
     [] {
         return QVariantList{QString(), kPortal_Idle, QVariantMap{{"reason", QString(kWhy)}}};
     },
     "o", "org.freedesktop.portal.Request", "Close"},
    {true, "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
     [] {
         return QVariantList{QString("idle"), QString(kWho), QString(kWhy), QString("block")};
     },
     "h", nullptr, nullptr},
};

CSleepInhibitor::CSleepInhibitor(const QDBusConnection& session, const QDBusConnection& system)
    : i_session(session),
      i_system(system),
      i_sessionWatchP(std::make_unique<QDBusServiceWatcher>()),
      i_systemWatchP(std::make_unique<QDBusServiceWatcher>()) {
    for (const auto& [watchP, busP] :
         {std::pair{i_sessionWatchP.get(), &i_session}, {i_systemWatchP.get(), &i_system}}) {
        watchP->setConnection(*busP);
        watchP->setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
        connect(watchP, &QDBusServiceWatcher::serviceUnregistered, this, [this](const QString& service) {
            if (i_holderP == nullptr || service != i_holderP->serviceZ) return;
            LogF("The display is not kept on any more: %s has gone", i_holderP->serviceZ);
            i_holderP = nullptr;
            i_held = {};
            Want(i_wantedB);
        });
    }
}

CSleepInhibitor::~CSleepInhibitor() { Want(false); }

QString CSleepInhibitor::Holder() const { return i_holderP == nullptr ? QString() : QString(i_holderP->serviceZ); }

const QDBusConnection& CSleepInhibitor::Bus(const Way& way) const { return way.systemB ? i_system : i_session; }

void CSleepInhibitor::Want(bool wantedB) {
    i_wantedB = wantedB;
    if (wantedB) {
        if (i_holderP == nullptr && !i_askingB) Ask(0);
    } else if (i_holderP != nullptr) {
        LogF("The display may sleep again: %s is told", i_holderP->serviceZ);
        Release(*std::exchange(i_holderP, nullptr), std::exchange(i_held, {}));
    }
}

void CSleepInhibitor::Ask(std::size_t n) {
    while (n < std::size(kWays) && !Bus(kWays[n]).isConnected()) ++n;
    i_askingB = n < std::size(kWays);
    if (!i_askingB) {
        if (!std::exchange(i_toldB, true))
            Log("### Error the display may sleep during a song: nothing here keeps it on");
        return;
    }
    const Way& way = kWays[n];
    QDBusMessage message = QDBusMessage::createMethodCall(way.serviceZ, way.pathZ, way.interfaceZ, "Inhibit");
    message.setArguments(way.arguments());
    auto* const callP = new QDBusPendingCallWatcher(Bus(way).asyncCall(message), this);
    connect(callP, &QDBusPendingCallWatcher::finished, this, [this, n](QDBusPendingCallWatcher* doneP) {
        doneP->deleteLater();
        Answered(n, doneP->reply());
    });
}

void CSleepInhibitor::Answered(std::size_t n, const QDBusMessage& reply) {
    const Way& way = kWays[n];
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != way.holdsZ) {
        LogF("The display is not kept on by %s: %s", way.serviceZ, reply.errorMessage().toUtf8().constData());
        if (i_wantedB) return Ask(n + 1);
        i_askingB = false;
        return;
    }
    i_askingB = false;
    if (!i_wantedB) return Release(way, reply);   // the song is over already
    LogF("The display is kept on by %s", way.serviceZ);
    i_toldB = false;
    i_holderP = &way;
    i_held = reply;
    (way.systemB ? *i_systemWatchP : *i_sessionWatchP).setWatchedServices({way.serviceZ});
}

void CSleepInhibitor::Release(const Way& way, const QDBusMessage& reply) {
    if (way.releaseZ == nullptr) return;   // the file is closed with the last copy of the answer
    const QVariant held = reply.arguments().value(0);
    const bool objectB = reply.signature() == "o";
    QDBusMessage message = QDBusMessage::createMethodCall(
        way.serviceZ, objectB ? held.value<QDBusObjectPath>().path() : QString(way.pathZ), way.releaseInterfaceZ,
        way.releaseZ);
    if (!objectB) message.setArguments({held});
    (void)Bus(way).send(message);   // no answer is waited for
}
