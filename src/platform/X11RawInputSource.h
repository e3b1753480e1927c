#pragma once

#include "platform/InputSource.h"

#include <map>
#include <memory>

class QSocketNotifier;
class XkbCharacters;
class KeyPressTracker;

// The global source of an X11 session: raw key and button events on the root
// window (XInput2), which arrive whichever window has the focus and take
// nothing from it. Runs on the main thread, on its own connection.
class X11RawInputSource : public InputSource {
    Q_OBJECT
public:
    // `display`: the X display to open; empty for the session's.
    explicit X11RawInputSource(QString display = {}, QObject* parent = nullptr);
    ~X11RawInputSource() override;

    bool start(Deliver deliver) override;
    void stop() override;
    void refresh() override;
    bool hearsOutside() const override { return display_ != nullptr; }
    std::vector<ClickerDevice> devices() const override;
    std::vector<InputDeviceInfo> visibleDevices() const override;

private:
    struct Slave {
        InputDeviceInfo info;
        bool isKeyboard = false;
        bool isTestDevice = false;  // the server's XTEST devices
    };
    bool open();
    void close();
    bool select();
    void readDevices();
    void receive();

    QString displayName_;
    Deliver deliver_;
    struct _XDisplay* display_ = nullptr;
    int opcode_ = 0;
    QSocketNotifier* notifier_ = nullptr;
    std::unique_ptr<XkbCharacters> characters_;
    std::map<int, Slave> slaves_;
    std::map<int, std::unique_ptr<KeyPressTracker>> keys_;
};
