#pragma once

#include "platform/InputSource.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

class UdevWatcher;
class XkbCharacters;

// The tap: input devices read directly (evdev), on X11 and Wayland alike.
// Never grabbed, so every key still reaches the program in front. A reader
// thread waits on all open devices and hands each press, copied into a
// snapshot, to the main thread. Devices are found and followed with udev:
// a remote plugged in during the show works at once, a removed one is closed.
class EvdevInputSource : public InputSource {
    Q_OBJECT
public:
    struct Options {
        bool findDevices = true;  // look in udev and follow hot-plug
    };
    explicit EvdevInputSource(Options options, QObject* parent = nullptr);
    EvdevInputSource() : EvdevInputSource(Options{}) {}
    ~EvdevInputSource() override;

    bool start(Deliver deliver) override;
    void stop() override;
    void refresh() override;
    bool hearsOutside() const override;
    std::vector<ClickerDevice> devices() const override;
    std::vector<InputDeviceInfo> visibleDevices() const override;
    bool reads(const QString& node) const override;

    // Reads the open descriptor `fd` as the device `info` (the source owns it
    // from now on). Tests hand over a pipe.
    void attach(int fd, const InputDeviceInfo& info);
    // Closes the device at `node`.
    void detach(const QString& node);
    // Opens the device node when readable and worth hearing.
    bool open(const QString& node);

private:
    struct Device;
    void readLoop();
    void wake();
    void post(EventSnapshot snapshot);

    Options options_;
    Deliver deliver_;
    UdevWatcher* udev_ = nullptr;
    std::shared_ptr<const XkbCharacters> characters_;
    // Shared with the reader thread.
    mutable std::mutex mutex_;
    std::map<QString, std::shared_ptr<Device>> open_;
    std::thread reader_;
    std::atomic<bool> running_{false};
    int wakePipe_[2] = {-1, -1};
    // Devices seen but not readable, for the access dialog.
    std::vector<InputDeviceInfo> locked_;
};
