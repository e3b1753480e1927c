#include "platform/DBusActivity.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QMutex>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

namespace {

// What the fake services were asked, in order, as "Method arg arg…".
class CallLog {
public:
    void add(const QString& call)
    {
        QMutexLocker lock(&mutex_);
        calls_ << call;
    }
    QStringList calls() const
    {
        QMutexLocker lock(&mutex_);
        return calls_;
    }

private:
    mutable QMutex mutex_;
    QStringList calls_;
};

class FakeScreenSaver : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.ScreenSaver")
public:
    explicit FakeScreenSaver(CallLog& log) : log_(log) {}
public slots:
    uint Inhibit(const QString& application, const QString& reason)
    {
        log_.add(QStringLiteral("Inhibit %1 %2").arg(application, reason));
        return 42;
    }
    void UnInhibit(uint cookie) { log_.add(QStringLiteral("UnInhibit %1").arg(cookie)); }

private:
    CallLog& log_;
};

class FakePortal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Inhibit")
public:
    explicit FakePortal(CallLog& log) : log_(log) {}
public slots:
    QDBusObjectPath Inhibit(const QString& window, uint flags, const QVariantMap& options)
    {
        log_.add(QStringLiteral("Inhibit [%1] %2 %3").arg(window).arg(flags).arg(options.value("reason").toString()));
        return QDBusObjectPath(QStringLiteral("/org/freedesktop/portal/desktop/request/1/t7"));
    }

private:
    CallLog& log_;
};

class FakeRequest : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Request")
public:
    explicit FakeRequest(CallLog& log) : log_(log) {}
public slots:
    void Close() { log_.add(QStringLiteral("Close")); }

private:
    CallLog& log_;
};

// A private session bus, and fake services on it answered from a thread of
// their own (the code under test calls them blocking from this thread).
struct PrivateBus {
    QTemporaryDir dir;
    QProcess daemon;
    QString address;
    QThread serviceThread;
    CallLog log;
    std::vector<QObject*> services;

    PrivateBus()
    {
        daemon.start(QStringLiteral("dbus-daemon"),
                     {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address=1"),
                      QStringLiteral("--address=unix:path=") + dir.filePath(QStringLiteral("bus"))});
        if (daemon.waitForStarted(10000) && daemon.waitForReadyRead(10000))
            address = QString::fromUtf8(daemon.readLine()).trimmed();
        serviceThread.start();
    }
    ~PrivateBus()
    {
        serviceThread.quit();
        serviceThread.wait();
        for (QObject* service : services)
            delete service;
        daemon.kill();
        daemon.waitForFinished(10000);
    }

    // Serves each object at its path under the well-known `name`.
    bool serve(const QString& name, const std::vector<std::pair<QString, QObject*>>& objects)
    {
        QDBusConnection bus = QDBusConnection::connectToBus(address, QStringLiteral("fake %1 on %2").arg(name, address));
        if (!bus.isConnected())
            return false;
        for (const auto& [path, object] : objects) {
            object->moveToThread(&serviceThread);
            services.push_back(object);
            if (!bus.registerObject(path, object, QDBusConnection::ExportAllSlots))
                return false;
        }
        return bus.registerService(name);
    }
};

}

class DBusActivityTest : public QObject {
    Q_OBJECT

private slots:
    // The session's screen saver is inhibited while the token is held and
    // released with the cookie it gave when the token goes.
    void screenSaverInhibitedWhileHeld()
    {
        PrivateBus bus;
        QVERIFY(!bus.address.isEmpty());
        QVERIFY(bus.serve("org.freedesktop.ScreenSaver", {{"/org/freedesktop/ScreenSaver", new FakeScreenSaver(bus.log)}}));
        // The portal is there too, but the screen saver answered first.
        QVERIFY(bus.serve("org.freedesktop.portal.Desktop", {{"/org/freedesktop/portal/desktop", new FakePortal(bus.log)}}));

        DBusActivity activity(bus.address);
        auto token = activity.begin(QStringLiteral("Live show"));
        QVERIFY(token);
        QCOMPARE(bus.log.calls(), QStringList{"Inhibit PDF Brelvonic Live show"});
        token.reset();
        QTRY_COMPARE_WITH_TIMEOUT(bus.log.calls(),
                                  (QStringList{"Inhibit PDF Brelvonic Live show", "UnInhibit 42"}), 10000);
    }

    // Where only the desktop portal answers, it inhibits idle and suspend,
    // and closing its request ends that.
    void portalWhereItIsWhatAnswers()
    {
        PrivateBus bus;
        QVERIFY(!bus.address.isEmpty());
        QVERIFY(bus.serve("org.freedesktop.portal.Desktop",
                          {{"/org/freedesktop/portal/desktop", new FakePortal(bus.log)},
                           {"/org/freedesktop/portal/desktop/request/1/t7", new FakeRequest(bus.log)}}));

        DBusActivity activity(bus.address);
        auto token = activity.begin(QStringLiteral("Live show"));
        QCOMPARE(bus.log.calls(), QStringList{"Inhibit [] 12 Live show"});
        token.reset();
        QTRY_COMPARE_WITH_TIMEOUT(bus.log.calls(), (QStringList{"Inhibit [] 12 Live show", "Close"}), 10000);
    }

    // No bus, or a bus with neither service: the program carries on.
    void carriesOnWithoutAService()
    {
        DBusActivity noBus(QStringLiteral("unix:path=/nonexistent/brelvonic-bus"));
        QVERIFY(noBus.begin(QStringLiteral("Live show")));

        PrivateBus bus;
        QVERIFY(!bus.address.isEmpty());
        DBusActivity empty(bus.address);
        auto token = empty.begin(QStringLiteral("Live show"));
        QVERIFY(token);
        token.reset();
        QVERIFY(bus.log.calls().isEmpty());
    }
};

QTEST_MAIN(DBusActivityTest)
#include "tst_DBusActivity.moc"
