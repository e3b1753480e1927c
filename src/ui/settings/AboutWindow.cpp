#include "ui/settings/AboutWindow.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/settings/AppInfo.h"
#include "ui/settings/SettingsPane.h"

#include <QDesktopServices>
#include <QGraphicsDropShadowEffect>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

AboutWindow::AboutWindow(AppModel& model, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , model_(model)
{
    setObjectName(QStringLiteral("about"));
    setWindowIcon(AppInfo::icon());
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(24, 28, 24, 24);
    column->setSpacing(6);

    auto* icon = new QLabel(this);
    icon->setPixmap(AppInfo::iconPixmap(128, devicePixelRatioF()));
    auto* shadow = new QGraphicsDropShadowEffect(icon);
    shadow->setBlurRadius(22);
    shadow->setOffset(0, 5);
    shadow->setColor(QColor(0, 0, 0, 90));
    icon->setGraphicsEffect(shadow);
    column->addWidget(icon, 0, Qt::AlignHCenter);
    column->addSpacing(8);

    const auto centred = [&](QLabel* label) {
        label->setAlignment(Qt::AlignHCenter);
        label->setWordWrap(true);
        column->addWidget(label);
        return label;
    };
    auto* name = centred(new QLabel(AppInfo::name(), this));
    QFont big = name->font();
    big.setPointSizeF(big.pointSizeF() * 1.7);
    big.setBold(true);
    name->setFont(big);
    version_ = centred(new QLabel(this));
    version_->setObjectName(QStringLiteral("version"));
    version_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    column->addSpacing(6);
    tagline_ = centred(new QLabel(this));
    developer_ = centred(new QLabel(this));
    SettingsPane::makeSecondary(developer_);
    column->addSpacing(12);
    site_ = new QPushButton(this);
    site_->setObjectName(QStringLiteral("openSite"));
    column->addWidget(site_, 0, Qt::AlignHCenter);
    connect(site_, &QPushButton::clicked, this, [] { QDesktopServices::openUrl(AppInfo::website()); });

    setFixedWidth(windowWidth);
    follower_ = new obs::Follower([this] { update(); }, this);
    follower_->start();
}

void AboutWindow::update()
{
    (void)model_.interfaceLanguage();
    setWindowTitle(L10n::t(QStringLiteral("about.app")));
    version_->setText(L10n::t(QStringLiteral("version"), AppInfo::version()));
    tagline_->setText(L10n::t(QStringLiteral("about.tagline")));
    developer_->setText(L10n::t(QStringLiteral("developer")) + QStringLiteral(" · ") + AppInfo::studio());
    site_->setText(L10n::t(QStringLiteral("open.site")));
    // The height follows the texts, which differ by language.
    QLayout* column = layout();
    setFixedHeight(column->hasHeightForWidth() ? column->heightForWidth(windowWidth) : sizeHint().height());
}
