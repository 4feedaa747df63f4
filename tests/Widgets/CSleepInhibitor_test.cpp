#include "Widgets/CSleepInhibitor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QTest>

#include "Widgets/QtApp.h"

namespace {

constexpr int kMost = 60'000;   // milliseconds, of a machine that is busy with other things

/** A message bus of the test's own. */
class Bus {
public:
    Bus() {
        i_daemon.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
        i_daemon.waitForReadyRead();
        i_address = QString::fromUtf8(i_daemon.readLine()).trimmed();
    }
    ~Bus() {
        i_daemon.terminate();
        i_daemon.waitForFinished();
    }
    QDBusConnection Connect(const char* nameZ) const { return QDBusConnection::connectToBus(i_address, nameZ); }

private:
    QProcess i_daemon;
    QString i_address;
};

/** A service that answers as it was told, and writes down what it was asked. */
class Service final : public QDBusVirtualObject {
public:
    Service(const Bus& bus, const char* nameZ) : i_name(nameZ), i_bus(bus.Connect(nameZ)) {
        i_bus.registerVirtualObject("/", this, QDBusConnection::SubPath);
        i_bus.registerService(i_name);
    }
    ~Service() override { Leave(); }
    void Leave() {
        i_bus.unregisterService(i_name);
        i_bus.unregisterObject("/");
        QDBusConnection::disconnectFromBus(i_name);
    }
    QVariant answer;          // invalid: "not supported"
    bool holdBackB = false;   // the answer comes when Answer is called
    QStringList told;

    void Answer() { (void)i_bus.send(Reply(std::exchange(i_waiting, {}))); }
    [[nodiscard]] bool Waits() const { return i_waiting.type() == QDBusMessage::MethodCallMessage; }

private:
    QString introspect(const QString&) const override { return {}; }
    QDBusMessage Reply(const QDBusMessage& message) const {
        return answer.isValid() ? message.createReply(answer)
                                : message.createErrorReply(QDBusError::NotSupported, "not here");
    }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        QStringList words;
        for (const QVariant& argument : message.arguments()) words += argument.toString();
        told += message.path() + " " + message.member() + "(" + words.join(",") + ")";
        if (message.member() != "Inhibit") return true;
        if (holdBackB)
            i_waiting = message;
        else
            (void)i_bus.send(Reply(message));
        return true;
    }
    const QString i_name;
    QDBusConnection i_bus;
    QDBusMessage i_waiting;
};

/** Nobody holds the other end of the pipe any more. */
bool Closed(int readEnd) {
    char byte = 0;
    return ::read(readEnd, &byte, 1) == 0;
}

TEST(CSleepInhibitor, EachWayIsAskedInTurnAndGivenBack) {
    App();
    const Bus bus;   // both of them
    CSleepInhibitor inhibitor(bus.Connect("session"), bus.Connect("system"));
    auto saverP = std::make_unique<Service>(bus, "org.freedesktop.ScreenSaver");
    Service portal(bus, "org.freedesktop.portal.Desktop"), login(bus, "org.freedesktop.login1");
    const QString none;

    saverP->answer = uint{42};
    inhibitor.Want(true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return inhibitor.Holder() == "org.freedesktop.ScreenSaver"; }, kMost));
    inhibitor.Want(true);
    inhibitor.Want(false);
    EXPECT_EQ(inhibitor.Holder(), none);
    ASSERT_TRUE(QTest::qWaitFor([&] { return saverP->told.size() == 2; }, kMost));
    EXPECT_EQ(saverP->told, (QStringList{"/org/freedesktop/ScreenSaver Inhibit(Vopla,A song plays)",
                                         "/org/freedesktop/ScreenSaver UnInhibit(42)"}));

    // The song is over before the answer comes: what was given is given back.
    saverP->told.clear();
    saverP->holdBackB = true;
    inhibitor.Want(true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return saverP->Waits(); }, kMost));
    inhibitor.Want(false);
    saverP->Answer();
    ASSERT_TRUE(QTest::qWaitFor([&] { return saverP->told.size() == 2; }, kMost));
    EXPECT_TRUE(saverP->told.last().endsWith("UnInhibit(42)"));
    EXPECT_EQ(inhibitor.Holder(), none);

    // The one that holds goes: the next is asked, and says by its handle that it holds.
    saverP->holdBackB = false;
    inhibitor.Want(true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return inhibitor.Holder() == "org.freedesktop.ScreenSaver"; }, kMost));
    portal.answer = QVariant::fromValue(QDBusObjectPath("/request/7"));
    saverP.reset();
    ASSERT_TRUE(QTest::qWaitFor([&] { return inhibitor.Holder() == "org.freedesktop.portal.Desktop"; }, kMost));
    inhibitor.Want(false);
    ASSERT_TRUE(QTest::qWaitFor([&] { return portal.told.size() == 2; }, kMost));
    EXPECT_EQ(portal.told.last(), "/request/7 Close()");

    // An answer of another kind holds nothing; logind holds as long as its file is open.
    portal.answer = QString("yes");
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    login.answer = QVariant::fromValue(QDBusUnixFileDescriptor(ends[1]));
    ::close(ends[1]);
    inhibitor.Want(true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return inhibitor.Holder() == "org.freedesktop.login1"; }, kMost));
    EXPECT_EQ(login.told, QStringList{"/org/freedesktop/login1 Inhibit(idle,Vopla,A song plays,block)"});
    login.answer = {};
    EXPECT_FALSE(Closed(ends[0]));
    inhibitor.Want(false);
    EXPECT_TRUE(QTest::qWaitFor([&] { return Closed(ends[0]); }, kMost));
    ::close(ends[0]);

    // Nobody takes it: all are asked again at the next word.
    const auto askedL = login.told.size();
    inhibitor.Want(true);
    ASSERT_TRUE(QTest::qWaitFor([&] { return login.told.size() == askedL + 1; }, kMost));
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            inhibitor.Want(true);
            return login.told.size() > askedL + 1;
        },
        kMost));
    EXPECT_EQ(inhibitor.Holder(), none);
}

}   // namespace
