#include "input/ClickerMonitor.h"
#include "model/AppModel.h"
#include "support/FakeInputSource.h"
#include "support/FakePlatform.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

// After the machine wakes, the clicker looks for its devices again and
// re-arms its sources: the login manager's sleep signal on the system bus,
// here a private bus with a stand-in login manager.
class ClickerWakeTest : public QObject {
    Q_OBJECT

    QTemporaryDir dir_;
    QProcess bus_;
    QString address_;

private slots:
    void initTestCase()
    {
        QVERIFY(dir_.isValid());
        bus_.start("dbus-daemon", {"--session", "--nofork", "--print-address=1",
                                   "--address=unix:path=" + dir_.filePath("system_bus")});
        QVERIFY(bus_.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(bus_.canReadLine() || bus_.waitForReadyRead(100), 30000);
        address_ = QString::fromLatin1(bus_.readLine()).trimmed();
        QVERIFY(!address_.isEmpty());
        // Before anything asks for the system bus.
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address_.toLatin1());
    }

    void cleanupTestCase()
    {
        bus_.terminate();
        bus_.waitForFinished();
    }

    void wakingUpLooksForDevicesAgain()
    {
        QDBusConnection login = QDBusConnection::connectToBus(address_, "login-manager");
        QVERIFY(login.isConnected());
        QVERIFY(login.registerService("org.freedesktop.login1"));

        FakePlatform platform;
        FakeInputSource* tap = nullptr;
        PlatformServices services = platform.services();
        services.makeClickerMonitor = [&] {
            return std::make_unique<ClickerMonitor>(ClickerMonitor::Sources{
                .local = {}, .global = {}, .tap = [&] {
                    auto made = std::make_unique<FakeInputSource>();
                    tap = made.get();
                    return made;
                }});
        };
        AppModel model(services);
        model.start();
        QVERIFY(tap);
        const int before = tap->refreshes;
        const auto prepareForSleep = [&](bool sleeping) {
            QDBusMessage signal = QDBusMessage::createSignal("/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                                                             "PrepareForSleep");
            signal << sleeping;
            QVERIFY(login.send(signal));
        };
        prepareForSleep(false);
        QTRY_COMPARE(tap->refreshes, before + 1);
        // The devices came back readable: the trust follows.
        tap->hearing = true;
        prepareForSleep(false);
        QTRY_COMPARE(tap->refreshes, before + 2);
        QVERIFY(model.clickerTrusted());
        QDBusConnection::disconnectFromBus("login-manager");
    }
};

QTEST_MAIN(ClickerWakeTest)
#include "tst_ClickerWake.moc"
