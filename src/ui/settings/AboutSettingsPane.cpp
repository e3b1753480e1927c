#include "ui/settings/AboutSettingsPane.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/settings/AppInfo.h"

#include <QDesktopServices>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

AboutSettingsPane::AboutSettingsPane(AppModel& model, QWidget* parent)
    : SettingsPane(model, parent)
{
    auto* header = new QWidget(this);
    auto* line = new QHBoxLayout(header);
    line->setContentsMargins(4, 4, 4, 4);
    line->setSpacing(14);
    auto* icon = new QLabel(header);
    icon->setPixmap(AppInfo::iconPixmap(72, devicePixelRatioF()));
    line->addWidget(icon);
    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    auto* name = new QLabel(AppInfo::name(), header);
    QFont big = name->font();
    big.setPointSizeF(big.pointSizeF() * 1.5);
    big.setBold(true);
    name->setFont(big);
    version_ = new QLabel(header);
    version_->setObjectName(QStringLiteral("version"));
    version_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    words->addStretch(1);
    words->addWidget(name);
    words->addWidget(version_);
    words->addStretch(1);
    line->addLayout(words, 1);
    place(header);

    QFormLayout* developer = addSection(QStringLiteral("developer"));
    addRow(developer, QStringLiteral("studio"), new QLabel(AppInfo::studio(), this));
    addRow(developer, QStringLiteral("website"), new QLabel(AppInfo::websiteHost(), this));
    auto* site = new QPushButton(this);
    site->setObjectName(QStringLiteral("openSite"));
    keepText(site, QStringLiteral("open.site_web"));
    developer->addRow(site);
    connect(site, &QPushButton::clicked, this, [] { QDesktopServices::openUrl(AppInfo::website()); });

    QFormLayout* files = addSection(QStringLiteral("files"));
    clearRecents_ = new QPushButton(this);
    clearRecents_->setObjectName(QStringLiteral("clearRecents"));
    keepText(clearRecents_, QStringLiteral("files.clear_recents"));
    files->addRow(clearRecents_);
    connect(clearRecents_, &QPushButton::clicked, this, [this] { model_.clearRecentFiles(); });

    follow();
}

void AboutSettingsPane::update()
{
    version_->setText(L10n::t(QStringLiteral("version"), AppInfo::version()));
    // Nothing to clear: the button says so by being unavailable.
    clearRecents_->setEnabled(!model_.recentFiles().isEmpty());
}
