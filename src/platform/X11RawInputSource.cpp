#include "X11RawInputSource.h"

#include "input/ClickerKeyMap.h"
#include "input/KeyPressTracker.h"
#include "platform/XkbCharacters.h"

#include <QSocketNotifier>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

namespace {

// The X server's rule names of the keyboard layout (rules, model, layout,
// variant, options, each ended by a NUL), else the session's.
XkbCharacters::Names layoutNames(Display* display)
{
    XkbCharacters::Names names = XkbCharacters::sessionNames();
    const Atom property = XInternAtom(display, "_XKB_RULES_NAMES", True);
    if (property == None)
        return names;
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(display, DefaultRootWindow(display), property, 0, 1024, False, XA_STRING, &type, &format,
                           &count, &after, &data) == Success
        && data && format == 8) {
        const QList<QByteArray> parts = QByteArray(reinterpret_cast<const char*>(data), int(count)).split('\0');
        const auto part = [&](int i) { return i < parts.size() ? QString::fromUtf8(parts[i]) : QString(); };
        if (!part(2).isEmpty())
            names = {part(0), part(1), part(2), part(3), part(4)};
    }
    if (data)
        XFree(data);
    return names;
}

QByteArray stringProperty(Display* display, int device, const char* name)
{
    const Atom property = XInternAtom(display, name, True);
    if (property == None)
        return {};
    Atom type = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    QByteArray out;
    if (XIGetProperty(display, device, property, 0, 1024, False, AnyPropertyType, &type, &format, &count, &after, &data)
            == Success
        && data) {
        if (format == 8)
            out = QByteArray(reinterpret_cast<const char*>(data), int(count));
        else if (format == 32 && count >= 2) {
            // Two numbers (vendor, product) as "vvvv:pppp".
            const long* v = reinterpret_cast<const long*>(data);
            out = QStringLiteral("%1:%2").arg(v[0] & 0xffff, 4, 16, QLatin1Char('0')).arg(v[1] & 0xffff, 4, 16, QLatin1Char('0')).toLatin1();
        }
    }
    if (data)
        XFree(data);
    return out;
}

}  // namespace

X11RawInputSource::X11RawInputSource(QString display, QObject* parent)
    : InputSource(parent)
    , displayName_(std::move(display))
{
}

X11RawInputSource::~X11RawInputSource()
{
    stop();
}

bool X11RawInputSource::start(Deliver deliver)
{
    stop();
    // A Wayland session shows X clients only what XWayland's own windows get.
    if (displayName_.isEmpty()
        && (qEnvironmentVariableIsSet("WAYLAND_DISPLAY") || qEnvironmentVariable("XDG_SESSION_TYPE") == u"wayland"))
        return false;
    deliver_ = std::move(deliver);
    if (!open()) {
        deliver_ = nullptr;
        return false;
    }
    return true;
}

void X11RawInputSource::stop()
{
    close();
    deliver_ = nullptr;
}

bool X11RawInputSource::open()
{
    const QByteArray name = displayName_.toLocal8Bit();
    display_ = XOpenDisplay(name.isEmpty() ? nullptr : name.constData());
    if (!display_)
        return false;
    int event = 0, error = 0, major = 2, minor = 0;
    if (!XQueryExtension(display_, "XInputExtension", &opcode_, &event, &error)
        || XIQueryVersion(display_, &major, &minor) != Success || !select()) {
        close();
        return false;
    }
    characters_ = std::make_unique<XkbCharacters>(layoutNames(display_));
    readDevices();
    notifier_ = new QSocketNotifier(ConnectionNumber(display_), QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, &X11RawInputSource::receive);
    XFlush(display_);
    return true;
}

void X11RawInputSource::close()
{
    delete notifier_;
    notifier_ = nullptr;
    if (display_)
        XCloseDisplay(display_);
    display_ = nullptr;
    slaves_.clear();
    keys_.clear();
}

bool X11RawInputSource::select()
{
    unsigned char rawBits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(rawBits, XI_RawKeyPress);
    XISetMask(rawBits, XI_RawKeyRelease);
    XISetMask(rawBits, XI_RawButtonPress);
    unsigned char allBits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(allBits, XI_HierarchyChanged);
    // Raw events once, through the master devices (the source id names the
    // physical one); the device list's changes from every device.
    XIEventMask masks[2] = {{XIAllMasterDevices, sizeof rawBits, rawBits}, {XIAllDevices, sizeof allBits, allBits}};
    return XISelectEvents(display_, DefaultRootWindow(display_), masks, 2) == Success;
}

void X11RawInputSource::refresh()
{
    // After a sleep the server may be gone and back: open again; else select
    // again, which costs nothing when nothing was lost.
    if (!deliver_)
        return;
    if (!display_) {
        if (open())
            emit devicesChanged();
        return;
    }
    select();
    XFlush(display_);
}

void X11RawInputSource::readDevices()
{
    slaves_.clear();
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(display_, XIAllDevices, &count);
    for (int i = 0; i < count; ++i) {
        const XIDeviceInfo& d = devices[i];
        if (d.use != XISlaveKeyboard && d.use != XISlavePointer && d.use != XIFloatingSlave)
            continue;
        Slave slave;
        slave.info.name = QString::fromUtf8(d.name).trimmed();
        slave.info.node = QString::fromLocal8Bit(stringProperty(display_, d.deviceid, "Device Node"));
        const QByteArray ids = stringProperty(display_, d.deviceid, "Device Product ID");
        if (ids.size() == 9) {
            slave.info.vendor = uint16_t(ids.left(4).toUInt(nullptr, 16));
            slave.info.product = uint16_t(ids.mid(5).toUInt(nullptr, 16));
        }
        slave.info.readable = true;
        slave.isKeyboard = d.use == XISlaveKeyboard;
        slave.isTestDevice = slave.info.name.contains(QLatin1String("XTEST"));
        slaves_[d.deviceid] = slave;
    }
    XIFreeDeviceInfo(devices);
}

std::vector<ClickerDevice> X11RawInputSource::devices() const
{
    std::vector<ClickerDevice> out;
    for (const auto& [id, slave] : slaves_) {
        // The server's own test devices are no one's keyboard.
        if (slave.isTestDevice)
            continue;
        const QString deviceID = slave.info.id();
        if (std::none_of(out.begin(), out.end(), [&](const ClickerDevice& d) { return d.id == deviceID; }))
            out.push_back({deviceID, slave.info.name, false});
    }
    return out;
}

std::vector<InputDeviceInfo> X11RawInputSource::visibleDevices() const
{
    std::vector<InputDeviceInfo> out;
    for (const auto& [id, slave] : slaves_)
        if (!slave.isTestDevice)
            out.push_back(slave.info);
    return out;
}

void X11RawInputSource::receive()
{
    if (!display_)
        return;
    bool devicesChanged = false;
    std::vector<EventSnapshot> heard;
    while (XPending(display_)) {
        XEvent event;
        XNextEvent(display_, &event);
        XGenericEventCookie* cookie = &event.xcookie;
        if (cookie->type != GenericEvent || cookie->extension != opcode_ || !XGetEventData(display_, cookie))
            continue;
        if (cookie->evtype == XI_HierarchyChanged) {
            devicesChanged = true;
        } else {
            const auto* raw = static_cast<const XIRawEvent*>(cookie->data);
            auto& keys = keys_[raw->sourceid];
            if (!keys)
                keys = std::make_unique<KeyPressTracker>();
            std::optional<EventSnapshot> snapshot;
            if (raw->detail >= 8 && cookie->evtype == XI_RawKeyRelease) {
                keys->release(uint16_t(raw->detail - 8));
            } else if (raw->detail >= 8 && cookie->evtype == XI_RawKeyPress) {
                const auto code = uint16_t(raw->detail - 8);
                // A press of a key that is down is the server's auto-repeat.
                const bool repeat = keys->press(code) || (raw->flags & XIKeyRepeat);
                if (!ClickerKeyMap::modifierOf(code))
                    snapshot = ClickerKeyMap::keyDown(code, characters_->chars(code), keys->flags(), repeat);
            } else if (cookie->evtype == XI_RawButtonPress) {
                // X numbers the extra buttons 8…11 (4…7 are the wheel).
                int number = -1;
                if (raw->detail == 2)
                    number = 2;
                else if (raw->detail >= 8 && raw->detail <= 11)
                    number = raw->detail - 5;
                if (number >= 0)
                    snapshot = ClickerKeyMap::buttonDown(number, keys->flags());
            }
            if (snapshot) {
                if (auto it = slaves_.find(raw->sourceid); it != slaves_.end()) {
                    // Test devices are not the operator's: no filter applies.
                    if (!it->second.isTestDevice)
                        snapshot->deviceID = it->second.info.id();
                    snapshot->deviceNode = it->second.info.node;
                }
                heard.push_back(std::move(*snapshot));
            }
        }
        XFreeEventData(display_, cookie);
    }
    if (devicesChanged)
        readDevices();
    // Acting may open dialogs and spin the event loop: only after reading.
    for (const EventSnapshot& s : heard)
        if (deliver_)
            deliver_(s);
    if (devicesChanged)
        emit this->devicesChanged();
    // Events Xlib read while answering a query wait in its queue, not on the socket.
    if (display_ && XEventsQueued(display_, QueuedAlready) > 0)
        QMetaObject::invokeMethod(this, &X11RawInputSource::receive, Qt::QueuedConnection);
}
