#pragma once

#include "input/EventSnapshot.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class AppModel;
class InputSource;
struct InputDeviceInfo;

// Hears presenter remotes in and outside the program and drives the model.
// Three sources listen at once: `local` (this program's windows), `global`
// (the X11 session) and `tap` (the input devices themselves); one press heard
// by several of them acts once.
class ClickerMonitor : public QObject {
    Q_OBJECT
public:
    // Makers of the three sources; any may be empty (tests, other sessions).
    struct Sources {
        std::function<std::unique_ptr<InputSource>()> local;
        std::function<std::unique_ptr<InputSource>()> global;
        std::function<std::unique_ptr<InputSource>()> tap;
    };
    // Where the keyboard is, as the arbitration between sources needs it.
    struct Focus {
        bool isActive = false;       // this program is in front
        bool hasKeyWindow = false;   // one of its windows has the keyboard
        bool isEditingText = false;  // a text field of it has the keyboard
    };

    explicit ClickerMonitor(Sources sources = {}, QObject* parent = nullptr);
    ~ClickerMonitor() override;

    // Begins listening (stops first). The model outlives the monitor.
    void start(AppModel& model);
    void stop();

    // Acts on one input; true when it was used.
    bool handle(const EventSnapshot& snapshot, ClickerSource source);
    // The digit a key code types, or none.
    static std::optional<QString> digit(uint16_t keyCode);

    bool isEditingText() const;
    // Presses are heard while another program has the focus.
    bool hearsOutside() const;
    // Looks for devices again (a newly readable one opens at once) and
    // re-arms the sources: on wake, on activation, on the trust poll.
    void refresh();
    // Every input device the sources can see, readable or not.
    std::vector<InputDeviceInfo> visibleDevices() const;

    // Tests replace where the focus is read from.
    void setFocusProbe(std::function<Focus()> probe) { focusProbe_ = std::move(probe); }

private slots:
    void onPrepareForSleep(bool sleeping);

private:
    Focus focus() const;
    void publishDevices();
    bool act(const EventSnapshot& snapshot);

    AppModel* model_ = nullptr;
    Sources makers_;
    std::unique_ptr<InputSource> local_;
    std::unique_ptr<InputSource> global_;
    std::unique_ptr<InputSource> tap_;
    std::function<Focus()> focusProbe_;
    bool sleepWatched_ = false;
};
