#include "ui/console/DropOverlay.h"

#include "l10n/L10n.h"
#include "ui/console/ConsoleStyle.h"

#include <QPainter>
#include <QPainterPath>

DropOverlay::DropOverlay(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    setObjectName(QStringLiteral("dropOverlay"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_NoSystemBackground);
    hide();
    startFollowing();
}

void DropOverlay::refresh()
{
    text_ = L10n::t(QStringLiteral("drop.set"));
    update();
}

void DropOverlay::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor accent = ConsoleStyle::mark();
    QPainterPath panel;
    panel.addRoundedRect(QRectF(rect()).adjusted(8, 8, -8, -8), 16, 16);
    QColor tint = accent;
    tint.setAlpha(48);
    painter.fillPath(panel, tint);
    painter.setPen(QPen(accent, 3, Qt::DashLine));
    painter.drawPath(panel);
    QFont font = this->font();
    font.setPointSizeF(font.pointSizeF() * 2);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(rect().adjusted(24, 24, -24, -24), Qt::AlignCenter | Qt::TextWordWrap, text_);
}
