#pragma once

#include "platform/Scheduler.h"

// Time and timers on the Qt event loop of the main thread.
class QtScheduler final : public Scheduler {
public:
    double now() const override;
    void after(double seconds, std::function<void()> work) override;
};
