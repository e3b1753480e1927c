#pragma once

#include "platform/Activity.h"
#include "platform/Dialogs.h"
#include "platform/FrameSink.h"
#include "platform/PdfEngine.h"
#include "platform/PlatformServices.h"
#include "platform/PreferencesStore.h"
#include "platform/RecentDocuments.h"
#include "platform/Scheduler.h"
#include "platform/Screens.h"

#include <QImage>
#include <QMap>

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

// A scheduler on virtual time: nothing runs until the test drives it.
class FakeScheduler final : public Scheduler {
public:
    explicit FakeScheduler(double start = 1'000'000.0) : now_(start) {}
    double now() const override { return now_; }
    void after(double seconds, std::function<void()> work) override;

    // Runs everything due now, including work that it queues for now.
    void runPending();
    // Moves time forward, running each piece of work at its due time.
    void advance(double seconds);
    // Runs until nothing is queued (time jumps to each due time).
    void runAll(int limit = 100000);
    // Runs only the earliest queued piece of work; false when none is queued.
    bool runNext() { return runNextDue(1e300); }
    std::size_t queued() const { return queue_.size(); }

private:
    struct Item {
        double due;
        std::size_t order;
        std::function<void()> work;
    };
    bool runNextDue(double until);

    double now_;
    std::size_t order_ = 0;
    std::vector<Item> queue_;
};

// Records alerts and answers panels from scripted replies.
class FakeDialogs final : public Dialogs {
public:
    struct Alert {
        QString title;
        QString text;
    };
    std::vector<Alert> alerts;
    std::vector<OpenOptions> openRequests;
    std::vector<SaveOptions> saveRequests;
    std::vector<PromptOptions> promptRequests;

    std::deque<QStringList> openReplies;
    std::deque<std::optional<QString>> saveReplies;
    std::deque<std::optional<QString>> promptReplies;

    void warning(const QString& title, const QString& informativeText) override;
    QStringList openPanel(const OpenOptions& options) override;
    std::optional<QString> savePanel(const SaveOptions& options) override;
    std::optional<QString> prompt(const PromptOptions& options) override;
};

class FakeScreens final : public Screens {
public:
    std::vector<PlatformScreen> list;
    std::optional<uint32_t> mainId;
    std::function<void()> handler;
    int handlersSet = 0;  // how often a change handler was installed

    std::vector<PlatformScreen> screens() const override { return list; }
    std::optional<uint32_t> mainDisplayId() const override { return mainId; }
    void setChangeHandler(std::function<void()> h) override
    {
        handler = std::move(h);
        ++handlersSet;
    }
    // Simulates the platform reporting a change.
    void changed()
    {
        if (handler)
            handler();
    }
};

class MemoryPreferences final : public PreferencesStore {
public:
    QMap<QString, QVariant> values;
    std::vector<QString> writes;  // keys in the order written

    QVariant value(const QString& key) const override { return values.value(key); }
    void setValue(const QString& key, const QVariant& value) override
    {
        values[key] = value;
        writes.push_back(key);
    }
};

class MemoryRecents final : public RecentDocuments {
public:
    QStringList items;
    void note(const QString& path) override
    {
        items.removeAll(path);
        items.prepend(path);
    }
    QStringList list() const override { return items; }
    void clear() override { items.clear(); }
};

class FakeActivity final : public Activity {
public:
    std::vector<QString> reasons;
    std::shared_ptr<void> begin(const QString& reason) override
    {
        reasons.push_back(reason);
        return std::make_shared<int>(1);
    }
};

// Records frames; `setRunning` plays the media service coming and going.
// Frames may arrive from the compositing worker, hence the lock.
class FakeFrameSink final : public FrameSink {
public:
    QString name;
    bool running = false;
    bool refuseStart = false;
    // Service present: `start` runs at once; absent: it waits.
    bool serviceUp = true;
    int starts = 0;
    int stops = 0;

    bool start(const QString& n) override
    {
        if (refuseStart)
            return false;
        name = n;
        running = serviceUp;
        ++starts;
        return true;
    }
    void publish(const QImage& frame) override
    {
        std::lock_guard lock(mutex_);
        frames_.push_back(frame.copy());
        keys_.push_back(frame.cacheKey());
    }
    void stop() override
    {
        running = false;
        ++stops;
    }
    bool isRunning() const override { return running; }
    void setRunningHandler(std::function<void()> handler) override { handler_ = std::move(handler); }

    void setRunning(bool on)
    {
        running = on;
        if (handler_)
            handler_();
    }
    std::size_t frameCount() const
    {
        std::lock_guard lock(mutex_);
        return frames_.size();
    }
    QImage lastFrame() const
    {
        std::lock_guard lock(mutex_);
        return frames_.empty() ? QImage() : frames_.back();
    }
    // Identity of each frame's pixels as handed over: equal keys mean the
    // same picture handed over again without being drawn anew.
    std::vector<qint64> frameKeys() const
    {
        std::lock_guard lock(mutex_);
        return keys_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<QImage> frames_;
    std::vector<qint64> keys_;
    std::function<void()> handler_;
};

// The real PDF engine, with a log of what the model asks it to draw, so tests
// can tell how often a page was rendered or rendered ahead.
class CountingPdfEngine final : public PdfEngine {
public:
    struct Request {
        QString path;
        int index = 0;
        QSize box;
        bool ahead = false;  // a prefetch hint rather than a render
    };
    std::shared_ptr<std::vector<Request>> requests = std::make_shared<std::vector<Request>>();

    CountingPdfEngine();
    std::variant<PdfDocumentPtr, PdfOpenError> open(const QString& path) override;

    // How many requests for page `index` of the file at `path` (any box).
    int count(const QString& path, int index, bool ahead) const;

private:
    std::shared_ptr<PdfEngine> real_;
};

// Doubles for every layer, the real PDF engine (tests use real PDFs). Linking
// this support also makes the system prefer English in tests.
struct FakePlatform {
    std::shared_ptr<CountingPdfEngine> pdf = std::make_shared<CountingPdfEngine>();
    std::shared_ptr<FakeScheduler> scheduler = std::make_shared<FakeScheduler>();
    std::shared_ptr<FakeDialogs> dialogs = std::make_shared<FakeDialogs>();
    std::shared_ptr<FakeScreens> screens = std::make_shared<FakeScreens>();
    std::shared_ptr<MemoryPreferences> preferences = std::make_shared<MemoryPreferences>();
    std::shared_ptr<MemoryRecents> recents = std::make_shared<MemoryRecents>();
    std::shared_ptr<FakeActivity> activity = std::make_shared<FakeActivity>();
    std::shared_ptr<FakeFrameSink> frameSink = std::make_shared<FakeFrameSink>();

    PlatformServices services() const;
};
