#pragma once

#include <functional>
#include <memory>

class PdfEngine;
class Dialogs;
class Scheduler;
class Screens;
class PreferencesStore;
class RecentDocuments;
class Activity;
class FrameSink;
class OutputWindowController;
class FramePublisher;
class ClickerMonitor;

// The platform layers the model reaches; tests pass doubles. Any layer may be
// null where a test does not need it.
struct PlatformServices {
    std::shared_ptr<PdfEngine> pdf;
    std::shared_ptr<Dialogs> dialogs;
    std::shared_ptr<Scheduler> scheduler;
    std::shared_ptr<Screens> screens;
    std::shared_ptr<PreferencesStore> preferences;
    std::shared_ptr<RecentDocuments> recents;
    std::shared_ptr<Activity> activity;
    std::shared_ptr<FrameSink> frameSink;

    // The services the model owns, made through these factories so that a
    // model test without them creates no window, stream or input device.
    // Each may be empty, and each may return null.
    std::function<std::unique_ptr<OutputWindowController>()> makeOutputWindowController;

    std::function<std::unique_ptr<FramePublisher>()> makeFramePublisher;

    std::function<std::unique_ptr<ClickerMonitor>()> makeClickerMonitor;

    // The real layers of this machine.
    static PlatformServices forThisMachine();
};
