#include "EvdevInputSource.h"

#include "platform/EvdevDecoder.h"
#include "platform/UdevWatcher.h"
#include "platform/XkbCharacters.h"

#include <QMetaObject>

#include <libevdev/libevdev.h>
#include <linux/input-event-codes.h>

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

struct EvdevInputSource::Device {
    int fd;
    InputDeviceInfo info;
    EvdevDecoder decoder;  // used by the reader thread only
    bool gone = false;     // reader thread only

    Device(int f, InputDeviceInfo i, EvdevDecoder::Characters chars)
        : fd(f)
        , info(std::move(i))
        , decoder(std::move(chars))
    {
    }
    ~Device() { ::close(fd); }
};

EvdevInputSource::EvdevInputSource(Options options, QObject* parent)
    : InputSource(parent)
    , options_(options)
{
}

EvdevInputSource::~EvdevInputSource()
{
    stop();
}

bool EvdevInputSource::start(Deliver deliver)
{
    stop();
    deliver_ = std::move(deliver);
    if (!characters_)
        characters_ = std::make_shared<const XkbCharacters>();
    if (::pipe2(wakePipe_, O_CLOEXEC | O_NONBLOCK) != 0)
        return false;
    running_ = true;
    reader_ = std::thread([this] { readLoop(); });
    if (options_.findDevices) {
        udev_ = new UdevWatcher(this);
        udev_->start();
        connect(udev_, &UdevWatcher::added, this, [this](const QString& node) {
            if (!reads(node) && open(node))
                emit devicesChanged();
        });
        connect(udev_, &UdevWatcher::removed, this, &EvdevInputSource::detach);
        refresh();
    }
    return true;
}

void EvdevInputSource::stop()
{
    if (running_) {
        running_ = false;
        wake();
        reader_.join();
    }
    for (int& fd : wakePipe_) {
        if (fd >= 0)
            ::close(fd);
        fd = -1;
    }
    {
        std::lock_guard lock(mutex_);
        open_.clear();
    }
    delete udev_;
    udev_ = nullptr;
    deliver_ = nullptr;
}

void EvdevInputSource::refresh()
{
    if (!udev_)
        return;
    bool changed = false;
    locked_.clear();
    for (const InputDeviceInfo& info : udev_->present()) {
        if (reads(info.node))
            continue;
        if (open(info.node))
            changed = true;
        else if (::access(info.node.toLocal8Bit().constData(), R_OK) != 0)
            locked_.push_back(info);
    }
    if (changed)
        emit devicesChanged();
}

bool EvdevInputSource::open(const QString& node)
{
    const int fd = ::open(node.toLocal8Bit().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return false;
    libevdev* dev = nullptr;
    if (libevdev_new_from_fd(fd, &dev) < 0) {
        ::close(fd);
        return false;
    }
    InputDeviceInfo info;
    info.node = node;
    info.name = QString::fromUtf8(libevdev_get_name(dev)).trimmed();
    info.vendor = uint16_t(libevdev_get_id_vendor(dev));
    info.product = uint16_t(libevdev_get_id_product(dev));
    info.readable = true;
    const auto has = [dev](unsigned code) { return libevdev_has_event_code(dev, EV_KEY, code) == 1; };
    info.presenter = has(KEY_PAGEUP) || has(KEY_PAGEDOWN) || has(KEY_LEFT) || has(KEY_RIGHT) || has(BTN_SIDE)
        || has(BTN_EXTRA) || has(BTN_FORWARD) || has(BTN_BACK);
    const bool media = has(KEY_NEXTSONG) || has(KEY_PREVIOUSSONG) || has(KEY_FASTFORWARD) || has(KEY_REWIND);
    libevdev_free(dev);
    // Devices without a single input of the presenter's (power buttons,
    // touchpads, sensors) are left alone.
    if (!info.presenter && !media) {
        ::close(fd);
        return false;
    }
    attach(fd, info);
    return true;
}

void EvdevInputSource::attach(int fd, const InputDeviceInfo& info)
{
    // The reader drains each device until it would block.
    ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) | O_NONBLOCK);
    std::shared_ptr<const XkbCharacters> chars = characters_;
    auto device = std::make_shared<Device>(fd, info, [chars](uint16_t code) {
        return chars ? chars->chars(code) : QString();
    });
    {
        std::lock_guard lock(mutex_);
        open_[info.node] = device;
    }
    wake();
    emit devicesChanged();
}

void EvdevInputSource::detach(const QString& node)
{
    {
        std::lock_guard lock(mutex_);
        if (open_.erase(node) == 0)
            return;
    }
    // The reader may still hold the device for a moment; it closes with the
    // last reference.
    wake();
    emit devicesChanged();
}

void EvdevInputSource::wake()
{
    if (wakePipe_[1] >= 0) {
        const char byte = 0;
        [[maybe_unused]] const auto n = ::write(wakePipe_[1], &byte, 1);
    }
}

bool EvdevInputSource::reads(const QString& node) const
{
    std::lock_guard lock(mutex_);
    return open_.count(node) != 0;
}

bool EvdevInputSource::hearsOutside() const
{
    std::lock_guard lock(mutex_);
    for (const auto& [node, device] : open_)
        if (device->info.presenter)
            return true;
    return false;
}

std::vector<ClickerDevice> EvdevInputSource::devices() const
{
    std::vector<ClickerDevice> out;
    std::lock_guard lock(mutex_);
    for (const auto& [node, device] : open_)
        out.push_back({device->info.id(), device->info.name, false});
    return out;
}

std::vector<InputDeviceInfo> EvdevInputSource::visibleDevices() const
{
    std::vector<InputDeviceInfo> out = locked_;
    std::lock_guard lock(mutex_);
    for (const auto& [node, device] : open_)
        out.push_back(device->info);
    return out;
}

void EvdevInputSource::post(EventSnapshot snapshot)
{
    QMetaObject::invokeMethod(
        this,
        [this, snapshot = std::move(snapshot)] {
            if (deliver_)
                deliver_(snapshot);
        },
        Qt::QueuedConnection);
}

void EvdevInputSource::readLoop()
{
    std::vector<std::shared_ptr<Device>> devices;
    std::vector<pollfd> fds;
    char buffer[64 * 24];
    while (running_) {
        devices.clear();
        {
            std::lock_guard lock(mutex_);
            for (const auto& [node, device] : open_)
                if (!device->gone)
                    devices.push_back(device);
        }
        fds.assign(1, pollfd{wakePipe_[0], POLLIN, 0});
        for (const auto& device : devices)
            fds.push_back(pollfd{device->fd, POLLIN, 0});
        if (::poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR)
            break;
        if (fds[0].revents & POLLIN)
            while (::read(wakePipe_[0], buffer, sizeof buffer) > 0) {
            }
        for (std::size_t i = 0; i < devices.size(); ++i) {
            const short events = fds[i + 1].revents;
            if (!events)
                continue;
            Device& device = *devices[i];
            bool ended = (events & (POLLERR | POLLNVAL)) != 0;
            for (;;) {
                const ssize_t n = ::read(device.fd, buffer, sizeof buffer);
                if (n > 0) {
                    for (EventSnapshot& s : device.decoder.feed(buffer, std::size_t(n))) {
                        s.deviceID = device.info.id();
                        s.deviceNode = device.info.node;
                        post(std::move(s));
                    }
                    continue;
                }
                // End of file or a device that went away: close it.
                if (n == 0 || (errno != EAGAIN && errno != EINTR))
                    ended = true;
                break;
            }
            if (ended || (events & POLLHUP)) {
                device.gone = true;
                const QString node = device.info.node;
                QMetaObject::invokeMethod(this, [this, node] { detach(node); }, Qt::QueuedConnection);
            }
        }
    }
}
