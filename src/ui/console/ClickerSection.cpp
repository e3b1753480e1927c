#include "ui/console/ClickerSection.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleStyle.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

ClickerSection::ClickerSection(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    auto* layout = beginSection(QStringLiteral("clicker"), QStringLiteral("network-wireless"), ConsoleStyle::green());
    activeRow_ = new QWidget(this);
    auto* row = new QHBoxLayout(activeRow_);
    row->setContentsMargins(0, 0, 0, 0);
    auto* tick = new QLabel(activeRow_);
    tick->setPixmap(ConsoleStyle::icon(QStringLiteral("emblem-ok")).pixmap(18, 18));
    active_ = new QLabel(activeRow_);
    active_->setObjectName(QStringLiteral("clickerActive"));
    QPalette green = active_->palette();
    green.setColor(QPalette::WindowText, ConsoleStyle::green());
    active_->setPalette(green);
    row->addWidget(tick);
    row->addWidget(active_, 1);
    layout->addWidget(activeRow_);
    needAccess_ = new QLabel(this);
    needAccess_->setWordWrap(true);
    layout->addWidget(needAccess_);
    openSettings_ = new QPushButton(this);
    openSettings_->setObjectName(QStringLiteral("clickerAccess"));
    connect(openSettings_, &QPushButton::clicked, this, [this] { model_.promptClickerAccess(); });
    layout->addWidget(openSettings_);
    hint_ = new QLabel(this);
    hint_->setWordWrap(true);
    hint_->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(hint_);
    startFollowing();
}

void ClickerSection::refresh()
{
    const bool trusted = model_.clickerTrusted();
    active_->setText(L10n::t(QStringLiteral("clicker.active")));
    needAccess_->setText(L10n::t(QStringLiteral("clicker.need_access")));
    openSettings_->setText(L10n::t(QStringLiteral("clicker.open_settings")));
    hint_->setText(L10n::t(QStringLiteral("clicker.hint")));
    activeRow_->setVisible(trusted);
    needAccess_->setVisible(!trusted);
    openSettings_->setVisible(!trusted);
}
