#include "ui/console/ThumbnailDelegate.h"

#include "ui/console/ConsoleStyle.h"
#include "ui/console/ThumbnailModel.h"

#include <QPainter>
#include <QPainterPath>

namespace {
constexpr int pad = 6;
constexpr int captionHeight = 18;
}

QSize ThumbnailDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const
{
    return {imageWidth + 2 * pad, imageHeight + captionHeight + 2 * pad};
}

void ThumbnailDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    const QRectF cell = option.rect;
    const QRectF image(cell.left() + pad, cell.top() + pad, imageWidth, imageHeight);
    const bool current = index.data(ThumbnailModel::CurrentRole).toBool();
    const bool hover = option.state & QStyle::State_MouseOver;

    QPainterPath frame;
    frame.addRoundedRect(image, 8, 8);
    painter->fillPath(frame, QColor(12, 12, 14));
    const QImage page = index.data(ThumbnailModel::ImageRole).value<QImage>();
    if (!page.isNull()) {
        QSizeF fitted = QSizeF(page.size()).scaled(image.size(), Qt::KeepAspectRatio);
        const QRectF target(image.center() - QPointF(fitted.width() / 2, fitted.height() / 2), fitted);
        painter->setClipPath(frame);
        painter->drawImage(target, page);
        painter->setClipping(false);
    }
    if (current || hover) {
        painter->setPen(QPen(current ? ConsoleStyle::blue() : QColor(120, 122, 130), current ? 3 : 1.5));
        painter->setBrush(Qt::NoBrush);
        painter->drawPath(frame);
    }
    // Snowflake on the page a frozen output holds; bookmark on a cue's page.
    if (index.data(ThumbnailModel::FrozenRole).toBool()) {
        const QRectF badge(image.right() - 24, image.top() + 4, 20, 20);
        painter->setPen(Qt::NoPen);
        painter->setBrush(QColor(0, 0, 0, 170));
        painter->drawEllipse(badge);
        ConsoleStyle::icon(QStringLiteral("weather-snow")).paint(painter, badge.adjusted(3, 3, -3, -3).toRect());
    }
    const QString cue = index.data(ThumbnailModel::CueRole).toString();
    const QRectF caption(cell.left() + pad, image.bottom() + 2, imageWidth, captionHeight);
    QFont font = option.font;
    font.setStyleHint(QFont::Monospace);
    font.setFamilies({QStringLiteral("DejaVu Sans Mono"), QStringLiteral("monospace")});
    font.setBold(current);
    painter->setFont(font);
    painter->setPen(current ? ConsoleStyle::sky() : option.palette.color(QPalette::Text));
    const QString number = index.data(Qt::DisplayRole).toString();
    painter->drawText(caption, Qt::AlignLeft | Qt::AlignVCenter, number);
    if (!cue.isEmpty()) {
        const int numberWidth = painter->fontMetrics().horizontalAdvance(number) + 6;
        const QRectF mark(caption.left() + numberWidth, caption.top() + 2, 14, 14);
        ConsoleStyle::icon(QStringLiteral("bookmark-new")).paint(painter, mark.toRect());
        painter->setPen(ConsoleStyle::orange());
        QFont plain = option.font;
        painter->setFont(plain);
        const QRectF title = caption.adjusted(numberWidth + 18, 0, 0, 0);
        painter->drawText(title, Qt::AlignLeft | Qt::AlignVCenter,
                          painter->fontMetrics().elidedText(cue, Qt::ElideRight, int(title.width())));
    }
    painter->restore();
}
