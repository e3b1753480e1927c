#pragma once

#include <QObject>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

// Per-property observation. A read inside a tracking scope registers the
// scope (and every scope around it) with that property; the scope is told
// once, synchronously, on the first change of anything it read, and is then
// spent. Derived values are plain functions, so reading one registers the
// stored properties behind it.
namespace obs {

class Tracker {
public:
    explicit Tracker(std::function<void()> onChange) : onChange_(std::move(onChange)) {}
    void fire();
    bool isArmed() const { return armed_; }

private:
    std::function<void()> onChange_;
    bool armed_ = true;
};

using TrackerPtr = std::shared_ptr<Tracker>;

// The readers registered with one property.
class Observers {
public:
    void registerRead() const;
    void notify();
    // Registrations held, spent ones included until they are dropped.
    std::size_t size() const { return trackers_.size(); }

private:
    mutable std::vector<std::weak_ptr<Tracker>> trackers_;
};

// Runs `apply` while recording the properties it reads. `onChange` runs once,
// at the first change of any of them. Keep the returned tracker alive for as
// long as the interest lasts; dropping it cancels the interest.
TrackerPtr withTracking(const std::function<void()>& apply, std::function<void()> onChange);

// True while some tracking scope is recording reads (for tests and asserts).
bool isTracking();

// A stored, observable value. `set` with an equal value does nothing at all;
// `mutate` changes in place and always notifies.
template <typename T>
class Observed {
public:
    Observed() = default;
    explicit Observed(T initial) : value_(std::move(initial)) {}
    Observed(const Observed&) = delete;
    Observed& operator=(const Observed&) = delete;

    const T& get() const
    {
        observers_.registerRead();
        return value_;
    }
    const T& operator()() const { return get(); }
    // Read without registering interest (for code that must not subscribe).
    const T& peek() const { return value_; }

    bool set(T value)
    {
        if (onAssign_)
            onAssign_(value);
        if (value_ == value)
            return false;
        value_ = std::move(value);
        observers_.notify();
        return true;
    }

    template <typename F>
    void mutate(F&& change)
    {
        std::forward<F>(change)(value_);
        observers_.notify();
    }

    // How many readers are registered (for tests).
    std::size_t readerCount() const { return observers_.size(); }

    // A side effect run on every assignment through `set`, equal or not.
    void setAssignHook(std::function<void(const T&)> hook) { onAssign_ = std::move(hook); }

private:
    T value_{};
    Observers observers_;
    std::function<void(const T&)> onAssign_;
};

// Keeps `update` in step with the model: runs it under tracking, and on the
// first change of anything it read queues one re-run on the main thread, so
// several changes in one event-loop turn cost a single update.
class Follower : public QObject {
    Q_OBJECT

public:
    explicit Follower(std::function<void()> update, QObject* parent = nullptr);
    // Runs the update now and arms tracking.
    void start();
    void stop();
    int updateCount() const { return updates_; }

private:
    void run();

    std::function<void()> update_;
    TrackerPtr tracker_;
    bool queued_ = false;
    bool active_ = false;
    int updates_ = 0;
};

}
