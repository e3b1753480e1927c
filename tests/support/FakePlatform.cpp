#include "FakePlatform.h"

#include "l10n/AppLanguage.h"
#include "platform/MuPdfEngine.h"

#include <algorithm>

namespace {
// Tests run on a system that prefers English, whatever the machine's locale,
// unless a test injects other preferred languages.
const bool englishSystem = [] {
    AppLanguages::setPreferredLanguagesSource([] { return QStringList{QStringLiteral("en-US")}; });
    return true;
}();

std::optional<QString> takeFront(std::deque<std::optional<QString>>& replies)
{
    if (replies.empty())
        return std::nullopt;
    const bool answered = replies.front().has_value();
    const QString text = replies.front().value_or(QString());
    replies.pop_front();
    if (!answered)
        return std::nullopt;
    return text;
}
}

namespace {
class CountingDocument final : public PdfDocument {
public:
    CountingDocument(PdfDocumentPtr real, std::shared_ptr<std::vector<CountingPdfEngine::Request>> log)
        : real_(std::move(real))
        , log_(std::move(log))
    {
    }
    QString path() const override { return real_->path(); }
    int pageCount() const override { return real_->pageCount(); }
    QSizeF pageSize(int index) const override { return real_->pageSize(index); }
    std::shared_ptr<const QImage> render(int index, QSize box) const override
    {
        log_->push_back({real_->path(), index, box, false});
        return real_->render(index, box);
    }
    void prefetch(int index, QSize box) const override
    {
        log_->push_back({real_->path(), index, box, true});
        real_->prefetch(index, box);
    }

private:
    PdfDocumentPtr real_;
    std::shared_ptr<std::vector<CountingPdfEngine::Request>> log_;
};
}

CountingPdfEngine::CountingPdfEngine()
    : real_(std::make_shared<MuPdfEngine>())
{
}

std::variant<PdfDocumentPtr, PdfOpenError> CountingPdfEngine::open(const QString& path)
{
    auto opened = real_->open(path);
    if (auto* document = std::get_if<PdfDocumentPtr>(&opened); document && *document)
        return PdfDocumentPtr(std::make_shared<CountingDocument>(*document, requests));
    return opened;
}

int CountingPdfEngine::count(const QString& path, int index, bool ahead) const
{
    return int(std::count_if(requests->begin(), requests->end(), [&](const Request& r) {
        return r.path == path && r.index == index && r.ahead == ahead;
    }));
}

void FakeScheduler::after(double seconds, std::function<void()> work)
{
    queue_.push_back(Item{now_ + std::max(seconds, 0.0), order_++, std::move(work)});
}

bool FakeScheduler::runNextDue(double until)
{
    auto next = std::min_element(queue_.begin(), queue_.end(), [](const Item& a, const Item& b) {
        return a.due != b.due ? a.due < b.due : a.order < b.order;
    });
    if (next == queue_.end() || next->due > until)
        return false;
    Item item = std::move(*next);
    queue_.erase(next);
    now_ = std::max(now_, item.due);
    item.work();
    return true;
}

void FakeScheduler::runPending()
{
    while (runNextDue(now_)) {
    }
}

void FakeScheduler::advance(double seconds)
{
    const double until = now_ + seconds;
    while (runNextDue(until)) {
    }
    now_ = until;
}

void FakeScheduler::runAll(int limit)
{
    while (limit-- > 0 && runNextDue(1e300)) {
    }
}

void FakeDialogs::warning(const QString& title, const QString& informativeText)
{
    alerts.push_back({title, informativeText});
}

QStringList FakeDialogs::openPanel(const OpenOptions& options)
{
    openRequests.push_back(options);
    if (openReplies.empty())
        return {};
    QStringList reply = openReplies.front();
    openReplies.pop_front();
    return reply;
}

std::optional<QString> FakeDialogs::savePanel(const SaveOptions& options)
{
    saveRequests.push_back(options);
    return takeFront(saveReplies);
}

std::optional<QString> FakeDialogs::prompt(const PromptOptions& options)
{
    promptRequests.push_back(options);
    return takeFront(promptReplies);
}

PlatformServices FakePlatform::services() const
{
    // Only the PDF engine is real: no test opens this user's settings or recent files.
    PlatformServices s;
    s.pdf = pdf;
    s.dialogs = dialogs;
    s.scheduler = scheduler;
    s.screens = screens;
    s.preferences = preferences;
    s.recents = recents;
    s.activity = activity;
    s.frameSink = frameSink;
    return s;
}
