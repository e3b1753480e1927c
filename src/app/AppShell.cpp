#include "AppShell.h"

#include "app/AppCommands.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleWindow.h"
#include "ui/settings/AboutWindow.h"
#include "ui/settings/SettingsWindow.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QGuiApplication>

namespace {
// A single window: made once, then shown and brought forward each time.
template <typename W>
W* bringForward(QPointer<W>& window, AppModel& model)
{
    if (!window) {
        window = new W(model);
        // Only the console keeps the program running.
        window->setAttribute(Qt::WA_QuitOnClose, false);
    }
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}
}

AppShell::AppShell(AppModel& model, QObject* parent)
    : QObject(parent)
    // Straight out of the main loop: no window gets a say.
    , quit([] { QCoreApplication::exit(0); })
    , model_(model)
{
    console_ = new ConsoleWindow(model_);
    console_->setObjectName(QStringLiteral("operator"));
    console_->installEventFilter(this);
    commands_ = new AppCommands(model_, *console_, {[this] { showAbout(); }, [this] { showSettings(); }});
    console_->setSettingsOpener([this] { showSettings(); });
    if (qGuiApp)
        connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &AppShell::onActivation);
}

AppShell::~AppShell()
{
    delete about_.data();
    delete settings_.data();
    delete console_;
}

AboutWindow* AppShell::about() const
{
    return about_.data();
}

SettingsWindow* AppShell::settings() const
{
    return settings_.data();
}

void AppShell::showConsole()
{
    console_->show();
    console_->raise();
    console_->activateWindow();
}

void AppShell::showAbout()
{
    bringForward(about_, model_);
}

void AppShell::showSettings()
{
    bringForward(settings_, model_);
}

void AppShell::openFiles(const QStringList& paths)
{
    showConsole();
    model_.ingestDroppedURLs(paths);
}

void AppShell::onActivation()
{
    // Becoming active, inactive or shown again: the clicker's sources may
    // have been dropped by the session meanwhile.
    model_.keepAliveForClicker();
    model_.refreshClickerTrust();
    emit activated();
}

bool AppShell::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == console_ && event->type() == QEvent::Close && event->isAccepted()) {
        // The console is the program: closing it ends the show, output included.
        QMetaObject::invokeMethod(this, [this] {
            if (quit)
                quit();
        }, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}
