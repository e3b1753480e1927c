#pragma once

#include "input/ClickerDevice.h"
#include "input/EventSnapshot.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

// One input device a source can see, readable or not (the access dialog
// lists the unreadable ones).
struct InputDeviceInfo {
    QString node;  // /dev/input/eventN, or empty
    QString name;
    uint16_t vendor = 0;
    uint16_t product = 0;
    bool readable = false;
    // Has presenter keys (Page Up/Down or arrows) or extra mouse buttons.
    bool presenter = false;

    // The id the operator's device filter stores: stable across re-plugging.
    QString id() const
    {
        return QStringLiteral("%1:%2:%3")
            .arg(vendor, 4, 16, QLatin1Char('0'))
            .arg(product, 4, 16, QLatin1Char('0'))
            .arg(name);
    }
};

// A place the clicker monitor hears input from. Every source only listens:
// it never grabs a device or takes an input away from another program, except
// that the in-program source swallows what the presenter used. Snapshots reach
// `deliver` on the main thread; its answer says whether the input was used.
class InputSource : public QObject {
    Q_OBJECT
public:
    using Deliver = std::function<bool(const EventSnapshot&)>;

    using QObject::QObject;
    ~InputSource() override = default;

    // False when this source cannot listen in this session.
    virtual bool start(Deliver deliver) = 0;
    virtual void stop() = 0;
    // Looks again for devices and re-arms what a sleep may have undone.
    virtual void refresh() {}
    // Presses can be heard here while another program has the focus.
    virtual bool hearsOutside() const { return false; }
    // The devices it hears, for the operator's filter.
    virtual std::vector<ClickerDevice> devices() const { return {}; }
    // Every device it can see, readable or not.
    virtual std::vector<InputDeviceInfo> visibleDevices() const { return {}; }
    // Whether it reads the device at `node` itself.
    virtual bool reads(const QString& node) const
    {
        Q_UNUSED(node);
        return false;
    }

signals:
    void devicesChanged();
};
