#pragma once

#include "platform/InputSource.h"

#include <QObject>
#include <QStringList>

class QSocketNotifier;
struct udev;
struct udev_monitor;

// Finds the input device nodes (/dev/input/eventN) and follows them being
// plugged in and removed, on the main thread.
class UdevWatcher : public QObject {
    Q_OBJECT
public:
    explicit UdevWatcher(QObject* parent = nullptr);
    ~UdevWatcher() override;

    // Starts following hot-plug; false without udev.
    bool start();
    // The event nodes present now, each described from udev's records (its
    // readability is left to whoever opens it).
    std::vector<InputDeviceInfo> present() const;

signals:
    void added(const QString& node);
    void removed(const QString& node);

private:
    void receive();

    udev* udev_ = nullptr;
    udev_monitor* monitor_ = nullptr;
    QSocketNotifier* notifier_ = nullptr;
};
