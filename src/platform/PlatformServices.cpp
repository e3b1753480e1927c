#include "PlatformServices.h"

#include "output/OutputWindowController.h"
#include "output/FramePublisher.h"
#include "output/FrameWorker.h"
#include "platform/DBusActivity.h"
#include "platform/QtDialogs.h"
#include "platform/MuPdfEngine.h"
#include "platform/PipeWireFrameSink.h"
#include "platform/QSettingsPreferences.h"
#include "platform/QtScreens.h"
#include "platform/XbelRecentDocuments.h"
#include "platform/QtScheduler.h"

PlatformServices PlatformServices::forThisMachine()
{
    PlatformServices s;
    s.pdf = std::make_shared<MuPdfEngine>();
    s.dialogs = std::make_shared<QtDialogs>();
    s.scheduler = std::make_shared<QtScheduler>();
    s.screens = std::make_shared<QtScreens>();
    s.preferences = std::make_shared<QSettingsPreferences>();
    s.recents = std::make_shared<XbelRecentDocuments>();
    s.activity = std::make_shared<DBusActivity>();
    s.frameSink = std::make_shared<PipeWireFrameSink>();

    s.makeOutputWindowController = [] { return std::make_unique<OutputWindowController>(); };

    // Frame publisher: absent when no frame sink could be made.
    s.makeFramePublisher = [sink = s.frameSink, scheduler = s.scheduler]() -> std::unique_ptr<FramePublisher> {
        if (!sink)
            return nullptr;
        return std::make_unique<FramePublisher>(sink, scheduler, std::make_shared<FrameWorker>());
    };

    // Clicker monitor: made by the clicker work.

    return s;
}
