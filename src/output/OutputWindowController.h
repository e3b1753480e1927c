#pragma once

#include "model/Observation.h"
#include "platform/Scheduler.h"
#include "platform/Screens.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

class AppModel;
class OutputWindow;

// Keeps the output window on the projector in step with the model: follows
// the output settings, the displays and the language, re-applies the window's
// geometry only when what it depends on changed (a signature of it), and
// hosts the periodic refresh of the clicker's trust.
class OutputWindowController : public QObject {
    Q_OBJECT
public:
    // How often the clicker's trust is read again, in seconds.
    static constexpr double trustInterval = 1.5;

    OutputWindowController();
    ~OutputWindowController() override;

    // Follows `model` from now on (once, at start-up). The model owns the
    // controller, so it outlives it.
    void attach(AppModel& model);
    // Brings the window in line with the model.
    void sync();
    // The display the output goes to: the selected one, else the first that
    // is not the main one, else the main one (or the first).
    static std::optional<PlatformScreen> targetScreen(const AppModel& model);

    OutputWindow* window() const { return window_; }
    bool wasVisible() const { return wasVisible_; }
    const QString& lastSignature() const { return lastSignature_; }

private:
    void ensure();
    void startObserving();
    void refreshTrust(Task task);
    // A selected display that was unplugged is selected again when it comes
    // back, as long as the operator has not chosen another one meanwhile.
    void followUnpluggedSelection();

    OutputWindow* window_ = nullptr;
    AppModel* model_ = nullptr;
    Task trustTask_;
    QString lastSignature_;
    bool wasVisible_ = false;
    std::optional<uint32_t> lastSelected_;
    std::optional<uint32_t> awaited_;   // the unplugged selection
    std::optional<uint32_t> fallback_;  // what the model chose in its place
    obs::TrackerPtr tracker_;
    // Scheduled work holds this weakly and does nothing once the controller is gone.
    std::shared_ptr<OutputWindowController*> self_;
};
