#include "DBusActivity.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusReply>

namespace {
const QString service = QStringLiteral("org.freedesktop.ScreenSaver");
const QString path = QStringLiteral("/org/freedesktop/ScreenSaver");
}

std::shared_ptr<void> DBusActivity::begin(const QString& reason)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return std::make_shared<int>(0);
    QDBusInterface screenSaver(service, path, service, bus);
    if (!screenSaver.isValid())
        return std::make_shared<int>(0);
    const QDBusReply<uint> cookie = screenSaver.call(QStringLiteral("Inhibit"), QStringLiteral("PDF Brelvonic"), reason);
    if (!cookie.isValid())
        return std::make_shared<int>(0);
    const uint value = cookie.value();
    return std::shared_ptr<void>(new uint(value), [](void* p) {
        auto* c = static_cast<uint*>(p);
        QDBusConnection bus = QDBusConnection::sessionBus();
        if (bus.isConnected())
            QDBusInterface(service, path, service, bus).call(QDBus::NoBlock, QStringLiteral("UnInhibit"), *c);
        delete c;
    });
}
