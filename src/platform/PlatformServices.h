#pragma once

#include <memory>

class PdfEngine;
class Dialogs;
class Scheduler;
class Screens;
class PreferencesStore;
class RecentDocuments;
class Activity;
class FrameSink;

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

    // The real layers of this machine.
    static PlatformServices forThisMachine();
};
