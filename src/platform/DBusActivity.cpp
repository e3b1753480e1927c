#include "DBusActivity.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QGuiApplication>
#include <QVariantMap>

#include <X11/Xlib.h>
#include <X11/extensions/scrnsaver.h>

#include <functional>
#include <vector>

namespace {
const QString screenSaverService = QStringLiteral("org.freedesktop.ScreenSaver");
const QString screenSaverPath = QStringLiteral("/org/freedesktop/ScreenSaver");
const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalInhibit = QStringLiteral("org.freedesktop.portal.Inhibit");
const QString portalRequest = QStringLiteral("org.freedesktop.portal.Request");
// The portal's flags: suspend (4) and idle (8).
constexpr uint inhibitSuspendAndIdle = 4 | 8;
// A screen saver that does not answer must not hold up the start.
constexpr int callTimeoutMs = 3000;

// Everything one activity holds, undone in reverse when the token goes.
struct Held {
    std::vector<std::function<void()>> undo;
    ~Held()
    {
        for (auto it = undo.rbegin(); it != undo.rend(); ++it)
            (*it)();
    }
};

QDBusConnection openBus(const std::optional<QString>& address)
{
    if (!address)
        return QDBusConnection::sessionBus();
    return QDBusConnection::connectToBus(*address, QStringLiteral("brelvonic-activity ") + *address);
}

// The session's screen saver; the undo step, or none when it did not answer.
std::function<void()> inhibitScreenSaver(QDBusConnection bus, const QString& reason)
{
    QDBusInterface screenSaver(screenSaverService, screenSaverPath, screenSaverService, bus);
    screenSaver.setTimeout(callTimeoutMs);
    const QDBusReply<uint> cookie =
        screenSaver.call(QStringLiteral("Inhibit"), QStringLiteral("PDF Brelvonic"), reason);
    if (!cookie.isValid())
        return {};
    return [bus, value = cookie.value()]() mutable {
        if (bus.isConnected())
            QDBusInterface(screenSaverService, screenSaverPath, screenSaverService, bus)
                .call(QDBus::NoBlock, QStringLiteral("UnInhibit"), value);
    };
}

// The desktop portal (sandboxes, some Wayland sessions); ended by closing the
// request it hands back.
std::function<void()> inhibitThroughPortal(QDBusConnection bus, const QString& reason)
{
    QDBusInterface portal(portalService, portalPath, portalInhibit, bus);
    portal.setTimeout(callTimeoutMs);
    const QDBusReply<QDBusObjectPath> handle = portal.call(QStringLiteral("Inhibit"), QString(), inhibitSuspendAndIdle,
                                                           QVariantMap{{QStringLiteral("reason"), reason}});
    if (!handle.isValid())
        return {};
    return [bus, path = handle.value().path()]() mutable {
        if (bus.isConnected())
            QDBusInterface(portalService, path, portalRequest, bus).call(QDBus::NoBlock, QStringLiteral("Close"));
    };
}

// On X11 the server's own screen saver blanks regardless of the session.
std::function<void()> suspendXScreenSaver()
{
    if (!qGuiApp || QGuiApplication::platformName() != QLatin1String("xcb"))
        return {};
    auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    Display* display = x11 ? x11->display() : nullptr;
    int event = 0, error = 0;
    if (!display || !XScreenSaverQueryExtension(display, &event, &error))
        return {};
    XScreenSaverSuspend(display, True);
    XFlush(display);
    return [display] {
        XScreenSaverSuspend(display, False);
        XFlush(display);
    };
}
}

DBusActivity::DBusActivity(std::optional<QString> busAddress)
    : busAddress_(std::move(busAddress))
{
}

std::shared_ptr<void> DBusActivity::begin(const QString& reason)
{
    auto held = std::make_shared<Held>();
    QDBusConnection bus = openBus(busAddress_);
    if (bus.isConnected()) {
        auto undo = inhibitScreenSaver(bus, reason);
        if (!undo)
            undo = inhibitThroughPortal(bus, reason);
        if (undo)
            held->undo.push_back(std::move(undo));
    }
    if (auto undo = suspendXScreenSaver())
        held->undo.push_back(std::move(undo));
    return held;
}
