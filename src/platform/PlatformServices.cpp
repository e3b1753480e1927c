#include "PlatformServices.h"

#include "platform/DBusActivity.h"
#include "platform/QtDialogs.h"
#include "platform/MuPdfEngine.h"
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
    // The frame sink joins here with the publisher.

    // Output window controller: made by the output window work.

    // Frame publisher: made by the video source work.

    // Clicker monitor: made by the clicker work.

    return s;
}
