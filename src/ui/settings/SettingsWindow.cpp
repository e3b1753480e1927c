#include "ui/settings/SettingsWindow.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/settings/AboutSettingsPane.h"
#include "ui/settings/AppInfo.h"
#include "ui/settings/ClickerSettingsPane.h"
#include "ui/settings/InterfaceSettingsPane.h"
#include "ui/settings/OutputSettingsPane.h"
#include "ui/settings/ShowSettingsPane.h"

#include <QScrollArea>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {
// The tabs in their order, by the key of their title, with the desktop
// theme's icon for each (none where the theme has no such icon).
struct Tab {
    const char* key;
    const char* themeIcon;
};
const Tab tabs[] = {
    {"tab.interface", "preferences-desktop-locale"},
    {"tab.output", "video-display"},
    {"tab.show", "x-office-presentation"},
    {"tab.clicker", "input-keyboard"},
    {"tab.about", "help-about"},
};

// A pane that outgrows the fixed window (long texts in some language)
// scrolls instead of being cut off.
QWidget* scrolling(QWidget* pane)
{
    auto* area = new QScrollArea;
    area->setWidget(pane);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    return area;
}
}

SettingsWindow::SettingsWindow(AppModel& model, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , model_(model)
{
    setObjectName(QStringLiteral("settings"));
    setWindowIcon(AppInfo::icon());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    tabs_ = new QTabWidget(this);
    tabs_->setDocumentMode(true);
    QWidget* const panes[] = {
        new InterfaceSettingsPane(model_), new OutputSettingsPane(model_), new ShowSettingsPane(model_),
        new ClickerSettingsPane(model_),   new AboutSettingsPane(model_),
    };
    for (std::size_t i = 0; i < std::size(tabs); ++i)
        tabs_->addTab(scrolling(panes[i]), QIcon::fromTheme(QString::fromLatin1(tabs[i].themeIcon)),
                      QString());
    layout->addWidget(tabs_);
    setFixedSize(windowWidth, windowHeight);

    follower_ = new obs::Follower([this] { update(); }, this);
    follower_->start();
}

void SettingsWindow::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    model_.refreshDisplays();
    model_.refreshClickerTrust();
}

void SettingsWindow::update()
{
    (void)model_.interfaceLanguage();
    setWindowTitle(L10n::t(QStringLiteral("settings")));
    for (int i = 0; i < tabs_->count(); ++i)
        tabs_->setTabText(i, L10n::t(QString::fromLatin1(tabs[i].key)));
}
