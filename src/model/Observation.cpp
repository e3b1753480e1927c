#include "Observation.h"

#include <QMetaObject>

#include <algorithm>

namespace obs {

namespace {
thread_local std::vector<TrackerPtr>* activeScopes = nullptr;
}

void Tracker::fire()
{
    if (!armed_)
        return;
    armed_ = false;
    auto callback = std::move(onChange_);
    onChange_ = nullptr;
    if (callback)
        callback();
}

void Observers::registerRead() const
{
    if (!activeScopes || activeScopes->empty())
        return;
    // A read inside a nested scope is a read of every enclosing scope too:
    // what the inner work used, the outer work used.
    for (const TrackerPtr& scope : *activeScopes) {
        const bool known = std::any_of(trackers_.begin(), trackers_.end(),
                                       [&](const std::weak_ptr<Tracker>& w) { return w.lock() == scope; });
        if (known)
            continue;
        // Drop spent readers now and then so a property read often but never
        // changed does not collect them without bound.
        if (trackers_.size() >= 16) {
            std::erase_if(trackers_, [](const std::weak_ptr<Tracker>& w) {
                auto t = w.lock();
                return !t || !t->isArmed();
            });
        }
        trackers_.push_back(scope);
    }
}

void Observers::notify()
{
    if (trackers_.empty())
        return;
    auto toTell = std::move(trackers_);
    trackers_.clear();
    for (auto& weak : toTell) {
        if (auto tracker = weak.lock())
            tracker->fire();
    }
}

TrackerPtr withTracking(const std::function<void()>& apply, std::function<void()> onChange)
{
    auto tracker = std::make_shared<Tracker>(std::move(onChange));
    std::vector<TrackerPtr> localStack;
    std::vector<TrackerPtr>* outer = activeScopes;
    std::vector<TrackerPtr>& stack = outer ? *outer : localStack;
    if (!outer)
        activeScopes = &localStack;
    stack.push_back(tracker);
    struct Restore {
        std::vector<TrackerPtr>& stack;
        std::vector<TrackerPtr>* outer;
        ~Restore()
        {
            stack.pop_back();
            if (!outer)
                activeScopes = nullptr;
        }
    } restore{stack, outer};
    apply();
    return tracker;
}

bool isTracking()
{
    return activeScopes && !activeScopes->empty();
}

Follower::Follower(std::function<void()> update, QObject* parent)
    : QObject(parent)
    , update_(std::move(update))
{
}

void Follower::start()
{
    active_ = true;
    run();
}

void Follower::stop()
{
    active_ = false;
    tracker_.reset();
}

void Follower::run()
{
    queued_ = false;
    if (!active_)
        return;
    ++updates_;
    tracker_ = withTracking(update_, [this] {
        if (queued_)
            return;
        queued_ = true;
        QMetaObject::invokeMethod(this, &Follower::run, Qt::QueuedConnection);
    });
}

}
