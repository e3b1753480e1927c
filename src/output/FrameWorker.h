#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

// One thread that composites published frames away from the main thread.
// Only the newest job waits: a job submitted while another still waits
// replaces it, so a slow frame never builds a queue and the caller never
// waits for the thread.
class FrameWorker {
public:
    FrameWorker();
    ~FrameWorker();
    FrameWorker(const FrameWorker&) = delete;
    FrameWorker& operator=(const FrameWorker&) = delete;

    void submit(std::function<void()> job);
    // Blocks until no job waits or runs (benchmarks and tests).
    void waitIdle();
    // Jobs replaced before they ran.
    int skipped() const;

private:
    void run();

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable idle_;
    std::function<void()> pending_;
    bool busy_ = false;
    bool quit_ = false;
    int skipped_ = 0;
    std::thread thread_;
};
