#include "ui/console/SidebarHeader.h"

#include "l10n/L10n.h"
#include "ui/console/ConsoleStyle.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

namespace {
// The icon drawn in one colour, whatever the theme's own colours are.
QPixmap tinted(const QIcon& icon, const QColor& tint, int side, qreal scale)
{
    QPixmap pixmap = icon.pixmap(QSize(side, side), scale);
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), tint);
    return pixmap;
}
}

SidebarHeader::SidebarHeader(AppModel& model, const QString& titleKey, const QString& iconName, const QColor& tint,
                             QWidget* parent)
    : ConsolePart(model, parent)
    , titleKey_(titleKey)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 6, 0, 2);
    layout->setSpacing(6);
    auto* symbol = new QLabel(this);
    symbol->setPixmap(tinted(ConsoleStyle::icon(iconName), tint, 18, devicePixelRatioF()));
    title_ = new QLabel(this);
    title_->setObjectName(QStringLiteral("sectionTitle"));
    ConsoleStyle::enlargeFont(title_, 1.1, true);
    QPalette palette = title_->palette();
    palette.setColor(QPalette::WindowText, tint.lighter(125));
    title_->setPalette(palette);
    layout->addWidget(symbol);
    layout->addWidget(title_, 1);
    startFollowing();
}

void SidebarHeader::refresh()
{
    title_->setText(L10n::t(titleKey_).toUpper());
}
