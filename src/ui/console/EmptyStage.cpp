#include "ui/console/EmptyStage.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleStyle.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

EmptyStage::EmptyStage(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    setObjectName(QStringLiteral("emptyStage"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 24, 24, 24);
    layout->addStretch(1);
    auto* symbol = new QLabel(this);
    symbol->setPixmap(ConsoleStyle::icon(QStringLiteral("x-office-presentation")).pixmap(64, 64));
    symbol->setAlignment(Qt::AlignCenter);
    layout->addWidget(symbol);
    auto* name = new QLabel(QStringLiteral("PDF Brelvonic"), this);
    name->setAlignment(Qt::AlignCenter);
    ConsoleStyle::enlargeFont(name, 2.2, true);
    layout->addWidget(name);
    subtitle_ = new QLabel(this);
    subtitle_->setAlignment(Qt::AlignCenter);
    subtitle_->setWordWrap(true);
    subtitle_->setForegroundRole(QPalette::PlaceholderText);
    ConsoleStyle::enlargeFont(subtitle_, 1.15);
    layout->addWidget(subtitle_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    const auto button = [&](const QString& icon, const char* name, auto action) {
        auto* b = new QPushButton(ConsoleStyle::icon(icon), QString(), this);
        b->setObjectName(QString::fromLatin1(name));
        b->setMinimumHeight(36);
        b->setIconSize(QSize(20, 20));
        connect(b, &QPushButton::clicked, this, action);
        buttons->addWidget(b);
        return b;
    };
    openPdf_ = button(QStringLiteral("document-open"), "emptyOpenPdf", [this] { model_.presentOpenPanel(); });
    openFolder_ = button(QStringLiteral("folder-open"), "emptyOpenFolder", [this] { model_.presentFolderPanel(); });
    openShow_ = button(QStringLiteral("x-office-presentation"), "emptyOpenShow", [this] { model_.presentOpenShowPanel(); });
    openPdf_->setDefault(true);
    buttons->addStretch(1);
    layout->addLayout(buttons);
    layout->addSpacing(18);
    recentTitle_ = new QLabel(this);
    recentTitle_->setAlignment(Qt::AlignCenter);
    ConsoleStyle::enlargeFont(recentTitle_, 1.0, true);
    layout->addWidget(recentTitle_);
    recents_ = new QListWidget(this);
    recents_->setObjectName(QStringLiteral("recentFiles"));
    recents_->setMaximumWidth(520);
    recents_->setMaximumHeight(180);
    recents_->setFocusPolicy(Qt::NoFocus);
    connect(recents_, &QListWidget::itemClicked, this,
            [this](QListWidgetItem* item) { model_.openRecentFile(item->data(Qt::UserRole).toString()); });
    layout->addWidget(recents_, 0, Qt::AlignHCenter);
    layout->addStretch(2);
    startFollowing();
}

void EmptyStage::refresh()
{
    subtitle_->setText(L10n::t(QStringLiteral("empty.subtitle")));
    openPdf_->setText(L10n::t(QStringLiteral("open.pdf")));
    openFolder_->setText(L10n::t(QStringLiteral("open.folder")));
    openShow_->setText(L10n::t(QStringLiteral("open.show")));
    recentTitle_->setText(L10n::t(QStringLiteral("recent")));
    const QStringList files = model_.recentFiles();
    recents_->clear();
    for (const QString& path : files) {
        auto* item = new QListWidgetItem(ConsoleStyle::icon(AppModel::isShowFile(path) ? QStringLiteral("x-office-presentation")
                                                                                       : QStringLiteral("x-office-document")),
                                         QFileInfo(path).fileName(), recents_);
        item->setToolTip(path);
        item->setData(Qt::UserRole, path);
    }
    recentTitle_->setVisible(!files.isEmpty());
    recents_->setVisible(!files.isEmpty());
}
