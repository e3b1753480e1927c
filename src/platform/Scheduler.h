#pragma once

#include <functional>
#include <memory>

// A unit of main-thread work that can be cancelled; cancellation is
// cooperative: the work checks `isCancelled` before touching anything.
class TaskHandle {
public:
    void cancel() { cancelled_ = true; }
    bool isCancelled() const { return cancelled_; }

private:
    bool cancelled_ = false;
};

using Task = std::shared_ptr<TaskHandle>;

// Time and main-thread timers. Tests drive a fake one instead of sleeping.
class Scheduler {
public:
    virtual ~Scheduler() = default;
    // Seconds since the epoch, never going back: wall-clock time at the
    // start of the run, carried on by a monotonic clock.
    virtual double now() const = 0;
    // Runs `work` on the main thread after `seconds` (0: on the next turn of
    // the event loop, after the work already queued).
    virtual void after(double seconds, std::function<void()> work) = 0;
    void post(std::function<void()> work) { after(0, std::move(work)); }
};
