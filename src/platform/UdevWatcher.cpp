#include "UdevWatcher.h"

#include <QSocketNotifier>

#include <libudev.h>
#include <linux/input-event-codes.h>

#include <bitset>

namespace {

// A node of ours: an event device, not a joystick or legacy mouse node.
bool isEventNode(const char* node)
{
    return node && QByteArrayView(node).startsWith("/dev/input/event");
}

// The key capability bitmask udev shows ("capabilities/key"): hexadecimal
// words, the most significant first.
std::bitset<KEY_CNT> keyCapabilities(const char* text)
{
    std::bitset<KEY_CNT> bits;
    if (!text)
        return bits;
    const QList<QByteArray> words = QByteArray(text).trimmed().split(' ');
    const int wordBits = int(sizeof(unsigned long) * 8);
    for (int i = 0; i < words.size(); ++i) {
        const unsigned long long word = words[words.size() - 1 - i].toULongLong(nullptr, 16);
        for (int b = 0; b < wordBits; ++b)
            if ((word >> b) & 1ull && i * wordBits + b < KEY_CNT)
                bits.set(std::size_t(i * wordBits + b));
    }
    return bits;
}

InputDeviceInfo describe(udev_device* device)
{
    InputDeviceInfo info;
    info.node = QString::fromLocal8Bit(udev_device_get_devnode(device));
    // Name, ids and capabilities live on the parent input device.
    udev_device* parent = udev_device_get_parent_with_subsystem_devtype(device, "input", nullptr);
    if (parent) {
        info.name = QString::fromUtf8(udev_device_get_sysattr_value(parent, "name")).trimmed();
        info.vendor = uint16_t(QByteArray(udev_device_get_sysattr_value(parent, "id/vendor")).toUInt(nullptr, 16));
        info.product = uint16_t(QByteArray(udev_device_get_sysattr_value(parent, "id/product")).toUInt(nullptr, 16));
        const auto keys = keyCapabilities(udev_device_get_sysattr_value(parent, "capabilities/key"));
        info.presenter = keys[KEY_PAGEUP] || keys[KEY_PAGEDOWN] || keys[KEY_LEFT] || keys[KEY_RIGHT] || keys[BTN_SIDE]
            || keys[BTN_EXTRA] || keys[BTN_FORWARD] || keys[BTN_BACK];
    }
    return info;
}

}  // namespace

UdevWatcher::UdevWatcher(QObject* parent)
    : QObject(parent)
    , udev_(udev_new())
{
}

UdevWatcher::~UdevWatcher()
{
    delete notifier_;
    if (monitor_)
        udev_monitor_unref(monitor_);
    if (udev_)
        udev_unref(udev_);
}

bool UdevWatcher::start()
{
    if (!udev_)
        return false;
    if (monitor_)
        return true;
    monitor_ = udev_monitor_new_from_netlink(udev_, "udev");
    if (!monitor_)
        return false;
    if (udev_monitor_filter_add_match_subsystem_devtype(monitor_, "input", nullptr) < 0
        || udev_monitor_enable_receiving(monitor_) < 0) {
        udev_monitor_unref(monitor_);
        monitor_ = nullptr;
        return false;
    }
    notifier_ = new QSocketNotifier(udev_monitor_get_fd(monitor_), QSocketNotifier::Read, this);
    connect(notifier_, &QSocketNotifier::activated, this, &UdevWatcher::receive);
    return true;
}

void UdevWatcher::receive()
{
    while (udev_device* device = udev_monitor_receive_device(monitor_)) {
        const char* node = udev_device_get_devnode(device);
        const QByteArrayView action(udev_device_get_action(device));
        if (isEventNode(node)) {
            const QString path = QString::fromLocal8Bit(node);
            if (action == "add" || action == "change")
                emit added(path);
            else if (action == "remove")
                emit removed(path);
        }
        udev_device_unref(device);
    }
}

std::vector<InputDeviceInfo> UdevWatcher::present() const
{
    std::vector<InputDeviceInfo> out;
    if (!udev_)
        return out;
    udev_enumerate* list = udev_enumerate_new(udev_);
    udev_enumerate_add_match_subsystem(list, "input");
    udev_enumerate_scan_devices(list);
    udev_list_entry* entry;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list))
    {
        udev_device* device = udev_device_new_from_syspath(udev_, udev_list_entry_get_name(entry));
        if (!device)
            continue;
        if (isEventNode(udev_device_get_devnode(device)))
            out.push_back(describe(device));
        udev_device_unref(device);
    }
    udev_enumerate_unref(list);
    return out;
}
