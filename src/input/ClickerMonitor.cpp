#include "ClickerMonitor.h"

#include "input/ClickerKeyMap.h"
#include "model/AppModel.h"
#include "platform/InputSource.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDBusConnection>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWindow>

ClickerMonitor::ClickerMonitor(Sources sources, QObject* parent)
    : QObject(parent)
    , makers_(std::move(sources))
{
}

ClickerMonitor::~ClickerMonitor()
{
    stop();
}

void ClickerMonitor::start(AppModel& model)
{
    model_ = &model;
    stop();
    const auto deliverFrom = [this](ClickerSource source) {
        return [this, source](const EventSnapshot& snapshot) { return handle(snapshot, source); };
    };
    const auto make = [&](const auto& maker, ClickerSource source) -> std::unique_ptr<InputSource> {
        if (!maker)
            return nullptr;
        std::unique_ptr<InputSource> made = maker();
        if (!made || !made->start(deliverFrom(source)))
            return nullptr;
        connect(made.get(), &InputSource::devicesChanged, this, &ClickerMonitor::publishDevices);
        return made;
    };
    local_ = make(makers_.local, ClickerSource::local);
    global_ = make(makers_.global, ClickerSource::global);
    tap_ = make(makers_.tap, ClickerSource::tap);
    publishDevices();

    // Devices closed and selections lost over a sleep come back on wake.
    if (!sleepWatched_) {
        QDBusConnection bus = QDBusConnection::systemBus();
        if (bus.isConnected())
            sleepWatched_ = bus.connect(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                                        QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"),
                                        this, SLOT(onPrepareForSleep(bool)));
    }
}

void ClickerMonitor::stop()
{
    for (auto* source : {&local_, &global_, &tap_}) {
        if (*source)
            (*source)->stop();
        source->reset();
    }
    if (sleepWatched_) {
        QDBusConnection::systemBus().disconnect(QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                                                QStringLiteral("org.freedesktop.login1.Manager"),
                                                QStringLiteral("PrepareForSleep"), this, SLOT(onPrepareForSleep(bool)));
        sleepWatched_ = false;
    }
}

void ClickerMonitor::onPrepareForSleep(bool sleeping)
{
    if (!sleeping)
        refresh();
}

void ClickerMonitor::refresh()
{
    for (auto* source : {local_.get(), global_.get(), tap_.get()})
        if (source)
            source->refresh();
    publishDevices();
}

bool ClickerMonitor::hearsOutside() const
{
    return (global_ && global_->hearsOutside()) || (tap_ && tap_->hearsOutside());
}

std::vector<InputDeviceInfo> ClickerMonitor::visibleDevices() const
{
    std::vector<InputDeviceInfo> all;
    for (auto* source : {global_.get(), tap_.get()})
        if (source)
            for (InputDeviceInfo& info : source->visibleDevices())
                all.push_back(std::move(info));
    return all;
}

void ClickerMonitor::publishDevices()
{
    if (!model_)
        return;
    std::vector<ClickerDevice> devices;
    for (auto* source : {global_.get(), tap_.get()}) {
        if (!source)
            continue;
        for (ClickerDevice device : source->devices()) {
            const bool known = std::any_of(devices.begin(), devices.end(),
                                           [&](const ClickerDevice& d) { return d.id == device.id; });
            if (known)
                continue;
            device.ignored = model_->isClickerDeviceIgnored(device.id);
            devices.push_back(std::move(device));
        }
    }
    model_->clickerDevices.set(std::move(devices));
    // A remote plugged in or removed changes what is heard outside at once.
    model_->clickerTrusted.set(hearsOutside());
}

ClickerMonitor::Focus ClickerMonitor::focus() const
{
    if (focusProbe_)
        return focusProbe_();
    Focus f;
    f.isActive = QGuiApplication::applicationState() == Qt::ApplicationActive;
    f.hasKeyWindow = QGuiApplication::focusWindow() != nullptr;
    f.isEditingText = isEditingText();
    return f;
}

bool ClickerMonitor::isEditingText() const
{
    if (focusProbe_)
        return focusProbe_().isEditingText;
    if (QGuiApplication::applicationState() != Qt::ApplicationActive || !QGuiApplication::focusWindow())
        return false;
    QWidget* w = QApplication::focusWidget();
    if (!w)
        return false;
    if (auto* line = qobject_cast<QLineEdit*>(w))
        return !line->isReadOnly();
    if (auto* text = qobject_cast<QTextEdit*>(w))
        return !text->isReadOnly();
    if (auto* plain = qobject_cast<QPlainTextEdit*>(w))
        return !plain->isReadOnly();
    if (auto* combo = qobject_cast<QComboBox*>(w))
        return combo->isEditable();
    return qobject_cast<QAbstractSpinBox*>(w) != nullptr;
}

std::optional<QString> ClickerMonitor::digit(uint16_t keyCode)
{
    return ClickerKeyMap::digit(keyCode);
}

bool ClickerMonitor::handle(const EventSnapshot& snapshot, ClickerSource source)
{
    if (!model_)
        return false;
    // Who answers: a window of ours hears its own keys; outside sources
    // stand back while it does, global stands back for a device the tap
    // reads, and the operator's ignored devices count only in our windows.
    const Focus f = focus();
    if (source == ClickerSource::local) {
        if (!f.hasKeyWindow)
            return false;
    } else {
        if (f.isActive && f.hasKeyWindow)
            return false;
        if (source == ClickerSource::global && tap_ && !snapshot.deviceNode.isEmpty() && tap_->reads(snapshot.deviceNode))
            return false;
        if (!snapshot.deviceID.isEmpty() && model_->isClickerDeviceIgnored(snapshot.deviceID))
            return false;
    }
    if (f.isEditingText || ClickerKeyMap::isBlocked(snapshot))
        return false;
    return act(snapshot);
}

bool ClickerMonitor::act(const EventSnapshot& snapshot)
{
    AppModel& m = *model_;
    ClickerAction action = ClickerKeyMap::forMediaOrButton(snapshot);
    if (action == ClickerAction::none) {
        if (auto d = ClickerKeyMap::digit(snapshot.keyCode)) {
            m.appendJumpDigit(*d);
            return true;
        }
        action = ClickerKeyMap::forKeyCode(snapshot.keyCode);
    }
    // Keypad Clear and Forward Delete take back a digit; with none typed the
    // key is read by its characters like any other.
    if (action == ClickerAction::eraseDigit) {
        if (!m.jumpBuffer().isEmpty()) {
            m.removeLastJumpDigit();
            return true;
        }
        action = ClickerAction::none;
    }
    if (action == ClickerAction::none)
        action = ClickerKeyMap::forCharacters(snapshot.chars);

    switch (action) {
    case ClickerAction::none:
    case ClickerAction::eraseDigit:
        return false;
    case ClickerAction::nextSlide:
        m.goToNextSlide();
        break;
    case ClickerAction::previousSlide:
        m.goToPreviousSlide();
        break;
    case ClickerAction::enter:
        if (m.jumpBuffer().isEmpty())
            m.goToNextSlide();
        else
            m.commitJump();
        break;
    case ClickerAction::escape:
        if (!m.jumpBuffer().isEmpty())
            m.clearJumpBuffer();
        else if (m.stageTool() != StageTool::pointer)
            m.returnToPointer();
        else
            m.toggleBlackout();
        break;
    case ClickerAction::firstPage:
        m.goToPage(0);
        break;
    case ClickerAction::lastPage:
        m.goToPage(m.pageCount() - 1);
        break;
    case ClickerAction::blackout:
        m.toggleBlackout();
        break;
    case ClickerAction::freeze:
        m.toggleFreeze();
        break;
    case ClickerAction::laser:
        m.setTool(StageTool::laser);
        break;
    case ClickerAction::marker:
        m.setTool(StageTool::marker);
        break;
    case ClickerAction::frame:
        m.setTool(StageTool::frame);
        break;
    case ClickerAction::zoom:
        m.setTool(StageTool::zoom);
        break;
    case ClickerAction::clearMarks:
        m.clearAnnotations();
        break;
    case ClickerAction::undoMark:
        m.undoAnnotation();
        break;
    case ClickerAction::previousCue:
        m.goToPreviousCue();
        break;
    case ClickerAction::nextCue:
        m.goToNextCue();
        break;
    }
    return true;
}
