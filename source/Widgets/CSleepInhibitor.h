#pragma once
#include <memory>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QObject>

class QDBusServiceWatcher;

/** Keeps the display on while it is wanted, by the first of the desktop's ways that takes it: the screen saver's
    service, the portal, logind. Each is asked in turn, its answer is looked at, and the log says which one holds; what
    was taken is given back. Nothing waits: a bus that is slow to answer holds nobody up.
    Source   freedesktop.org: Idle Inhibition Service; XDG Desktop Portal, Inhibit; systemd-logind, Inhibit.
    Threads  main.
    Errors   logged, once for as long as nobody holds; Want(true) tries again then. */
class CSleepInhibitor final : public QObject {
    Q_OBJECT
public:
    CSleepInhibitor(const QDBusConnection& session, const QDBusConnection& system);
    ~CSleepInhibitor() override;

    /** The same wish again changes nothing, but that all are asked again when none holds. */
    void Want(bool wantedB);
    /** The service that holds; empty for none. */
    [[nodiscard]] QString Holder() const;

private:
    struct Way;
    static const Way kWays[];

    [[nodiscard]] const QDBusConnection& Bus(const Way& way) const;
    void Ask(std::size_t n);
    void Answered(std::size_t n, const QDBusMessage& reply);
    void Release(const Way& way, const QDBusMessage& reply);

    const QDBusConnection i_session, i_system;
    bool i_wantedB = false, i_askingB = false, i_toldB = false;
    const Way* i_holderP = nullptr;
    QDBusMessage i_held;   // the answer of the one that holds: its number, its handle or its open file
    const std::unique_ptr<QDBusServiceWatcher> i_sessionWatchP, i_systemWatchP;
};
