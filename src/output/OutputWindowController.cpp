#include "OutputWindowController.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "output/OutputWindow.h"

#include <QDebug>

#include <algorithm>
#include <utility>

namespace {
// The standard text form of a rectangle; only equality matters.
QString describe(const QRectF& r)
{
    QString text;
    QDebug(&text).nospace() << r;
    return text;
}

QString flag(bool on) { return on ? QStringLiteral("true") : QStringLiteral("false"); }
}

OutputWindowController::OutputWindowController()
    : self_(std::make_shared<OutputWindowController*>(this))
{
}

OutputWindowController::~OutputWindowController()
{
    *self_ = nullptr;
    if (trustTask_)
        trustTask_->cancel();
    tracker_.reset();
    delete window_;
}

void OutputWindowController::attach(AppModel& model)
{
    model_ = &model;
    if (trustTask_)
        trustTask_->cancel();
    startObserving();
    trustTask_ = std::make_shared<TaskHandle>();
    refreshTrust(trustTask_);
    sync();
}

void OutputWindowController::refreshTrust(Task task)
{
    if (task->isCancelled() || !model_)
        return;
    model_->refreshClickerTrust();
    const auto& scheduler = model_->services().scheduler;
    if (!scheduler)
        return;
    std::weak_ptr<OutputWindowController*> weak = self_;
    scheduler->after(trustInterval, [weak, task] {
        const auto alive = weak.lock();
        if (alive && *alive)
            (*alive)->refreshTrust(task);
    });
}

void OutputWindowController::startObserving()
{
    if (!model_)
        return;
    AppModel& m = *model_;
    std::weak_ptr<OutputWindowController*> weak = self_;
    std::shared_ptr<Scheduler> scheduler = m.services().scheduler;
    tracker_ = obs::withTracking(
        [&m] {
            (void)m.isOutputVisible();
            (void)m.selectedDisplayID();
            (void)m.aspect();
            (void)m.customWidth();
            (void)m.customHeight();
            (void)m.outputAlwaysOnTop();
            (void)m.displays();
            (void)m.hideOutputCursor();
            (void)m.interfaceLanguage();
        },
        [weak, scheduler] {
            // Only scheduled here: the window is never touched inside a change.
            if (!scheduler)
                return;
            scheduler->post([weak] {
                const auto alive = weak.lock();
                if (!alive || !*alive)
                    return;
                (*alive)->sync();
                (*alive)->startObserving();
            });
        });
}

std::optional<PlatformScreen> OutputWindowController::targetScreen(const AppModel& model)
{
    const auto& screens = model.services().screens;
    if (!screens)
        return std::nullopt;
    const std::vector<PlatformScreen> list = screens->screens();
    if (list.empty())
        return std::nullopt;
    if (const auto selected = model.selectedDisplayID.peek())
        for (const PlatformScreen& screen : list)
            if (screen.displayId == selected)
                return screen;
    const auto mainId = screens->mainDisplayId();
    if (!mainId)
        return list.front();
    for (const PlatformScreen& screen : list)
        if (screen.displayId != mainId)
            return screen;
    for (const PlatformScreen& screen : list)
        if (screen.displayId == mainId)
            return screen;
    return list.front();
}

void OutputWindowController::ensure()
{
    if (window_ || !model_)
        return;
    window_ = new OutputWindow(*model_);
    window_->setWindowTitle(L10n::t(QStringLiteral("output.title")));
    window_->setHidesCursor(model_->hideOutputCursor.peek());
    window_->setAlwaysOnTop(model_->outputAlwaysOnTop.peek());
}

void OutputWindowController::sync()
{
    if (!model_)
        return;
    AppModel& m = *model_;
    followUnpluggedSelection();
    if (!m.isOutputVisible.peek()) {
        if (wasVisible_) {
            // Hidden, never closed: it comes back as it was.
            window_->hide();
            wasVisible_ = false;
            lastSignature_.clear();
        }
        return;
    }
    const std::optional<PlatformScreen> screen = targetScreen(m);
    ensure();
    if (!window_ || !screen)
        return;

    const QRectF frame = m.outputFrame(screen->frame);
    const AspectMode aspect = m.aspect.peek();
    const QString signature = QStringList{describe(frame),
                                          describe(screen->frame),
                                          aspectModes.rawValue(aspect),
                                          flag(m.outputAlwaysOnTop.peek()),
                                          QString::number(m.customWidth.peek()),
                                          QString::number(m.customHeight.peek()),
                                          flag(m.hideOutputCursor.peek())}
                                  .join(u'|');
    if (signature != lastSignature_) {
        lastSignature_ = signature;
        const bool fill = aspect == AspectMode::fillDisplay;
        window_->place(frame, screen->frame, fill);
        window_->setAlwaysOnTop(m.outputAlwaysOnTop.peek());
        window_->setMovableByBackground(!fill);
        window_->setWindowTitle(L10n::t(QStringLiteral("output.title")));
        window_->setHidesCursor(m.hideOutputCursor.peek());
        m.outputPixelSize.set(QSizeF(frame.width() * screen->backingScale, frame.height() * screen->backingScale));
        m.persistPreferences();
    }
    if (!wasVisible_) {
        window_->present();
        wasVisible_ = true;
    }
}

void OutputWindowController::followUnpluggedSelection()
{
    AppModel& m = *model_;
    const std::vector<OutputDisplay>& displays = m.displays.peek();
    const auto connected = [&displays](std::optional<uint32_t> id) {
        return id && std::any_of(displays.begin(), displays.end(), [id](const OutputDisplay& d) { return d.id == *id; });
    };
    const std::optional<uint32_t> selected = m.selectedDisplayID.peek();
    if (awaited_ && selected != fallback_) {
        if (connected(fallback_))
            awaited_.reset();  // the operator chose another display
        else
            fallback_ = selected;  // the stand-in went too: the model chose again
    }
    if (awaited_ && connected(awaited_)) {
        lastSelected_ = std::exchange(awaited_, std::nullopt);
        m.selectedDisplayID.set(lastSelected_);
        return;
    }
    if (!awaited_ && lastSelected_ && selected != lastSelected_ && !connected(lastSelected_)) {
        awaited_ = lastSelected_;
        fallback_ = selected;
    }
    lastSelected_ = selected;
}

// ---- The model's side of the output window ----

void AppModel::syncOutput()
{
    if (output_)
        output_->sync();
}

void AppModel::toggleOutputVisible()
{
    isOutputVisible.mutate([](bool& on) { on = !on; });
    syncOutput();
}
