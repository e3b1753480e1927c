#include "FrameWorker.h"

FrameWorker::FrameWorker()
    : thread_([this] { run(); })
{
}

FrameWorker::~FrameWorker()
{
    {
        std::lock_guard lock(mutex_);
        quit_ = true;
    }
    wake_.notify_all();
    thread_.join();
}

void FrameWorker::submit(std::function<void()> job)
{
    {
        std::lock_guard lock(mutex_);
        if (pending_)
            ++skipped_;
        pending_ = std::move(job);
    }
    wake_.notify_one();
}

void FrameWorker::waitIdle()
{
    std::unique_lock lock(mutex_);
    idle_.wait(lock, [this] { return !pending_ && !busy_; });
}

int FrameWorker::skipped() const
{
    std::lock_guard lock(mutex_);
    return skipped_;
}

void FrameWorker::run()
{
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return quit_ || pending_; });
        if (quit_)
            return;
        auto job = std::move(pending_);
        pending_ = nullptr;
        busy_ = true;
        lock.unlock();
        job();
        // Whatever the job captured is released here, off the lock.
        job = nullptr;
        lock.lock();
        busy_ = false;
        if (!pending_)
            idle_.notify_all();
    }
}
