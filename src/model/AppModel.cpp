#include "AppModel.h"

#include "input/ClickerMonitor.h"
#include "l10n/L10n.h"
#include "output/FramePublisher.h"
#include "output/OutputWindowController.h"
#include "platform/Activity.h"
#include "platform/PreferencesStore.h"
#include "platform/RecentDocuments.h"
#include "platform/Screens.h"

#include <QFileInfo>

AppModel::AppModel(PlatformServices services)
    : services_(std::move(services))
    , self_(std::make_shared<AppModel*>(this))
{
    // Interface texts follow the language this model stores.
    AppLanguages::readPreferencesFrom(services_.preferences);
    AppLanguages::noteReadsWith(languageRead_);
    interfaceLanguage.set(AppLanguages::detected());
    interfaceLanguage.setAssignHook([this](const AppLanguage& language) {
        if (services_.preferences)
            services_.preferences->setValue(QStringLiteral("interfaceLanguage"), appLanguages.rawValue(language));
    });
    // The services this model owns; creating them starts nothing.
    if (services_.makeClickerMonitor)
        clicker_ = services_.makeClickerMonitor();

    if (services_.makeOutputWindowController)
        output_ = services_.makeOutputWindowController();

    if (services_.makeFramePublisher)
        syphonOutput_ = services_.makeFramePublisher();
}

AppModel::~AppModel()
{
    // Tasks hold the model weakly through `self_`; make them see it gone.
    *self_ = nullptr;
    // Renders in flight are not wanted any more.
    stopSlideWork();
    if (auto task = transitionTask.peek())
        task->cancel();
}

AppModel& AppModel::shared()
{
    static AppModel* instance = new AppModel(PlatformServices::forThisMachine());
    return *instance;
}

void AppModel::start()
{
    // 1. The display list.
    if (services_.screens)
        refreshDisplays();
    // 2. Preferences, before anything that starts with their values.
    restorePreferences();
    // 3. Clicker monitor.
    if (clicker_)
        clicker_->start(*this);
    // 4. Keep the machine awake and responsive for the whole run.
    keepAliveForClicker();
    // 5. Output window controller.
    if (output_)
        output_->attach(*this);
    // 6. Frame publisher, when enabled.
    if (syphonOutput_ && isSyphonEnabled.peek())
        syphonOutput_->start(*this);
    // 7. Whether presses are heard while another program has the focus.
    refreshClickerTrust();
    // 8. Follow display changes.
    if (services_.screens && !screenObserver.peek()) {
        std::weak_ptr<AppModel*> weak = self_;
        services_.screens->setChangeHandler([weak, scheduler = services_.scheduler] {
            if (!scheduler)
                return;
            scheduler->post([weak] {
                auto alive = weak.lock();
                if (!alive || !*alive)
                    return;
                (*alive)->refreshDisplays();
                (*alive)->syncOutput();
            });
        });
        screenObserver.set(true);
    }
    // 9. Recent files.
    if (services_.recents)
        recentFiles.set(services_.recents->list());
    // 10. Two or more displays: the output shows at once.
    if (displays().size() >= 2)
        isOutputVisible.set(true);
    // 11.
    syncOutput();
}

QString AppModel::fileTitle() const
{
    if (auto entry = currentEntry())
        return entry->title;
    const auto& url = documentURL();
    if (!url)
        return L10n::t(QStringLiteral("file.none"));
    return QFileInfo(*url).completeBaseName();
}

QString AppModel::showTitle() const
{
    if (const auto& url = showFileURL())
        return QFileInfo(*url).completeBaseName();
    if (!playlist().empty())
        return L10n::t(QStringLiteral("show.new"));
    return QStringLiteral("PDF Brelvonic");
}
