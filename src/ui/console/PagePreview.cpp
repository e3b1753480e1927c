#include "ui/console/PagePreview.h"

#include <QPainter>
#include <QPainterPath>

PagePreview::PagePreview(QWidget* parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void PagePreview::show(std::shared_ptr<const QImage> image, const QString& placeholder)
{
    if (image == image_ && placeholder == placeholder_)
        return;
    image_ = std::move(image);
    placeholder_ = placeholder;
    scaled_ = QImage();
    update();
}

void PagePreview::resizeEvent(QResizeEvent*)
{
    scaled_ = QImage();
}

void PagePreview::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Window));
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath well;
    well.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
    painter.fillPath(well, QColor(12, 12, 14));
    painter.setPen(QColor(70, 72, 78));
    painter.drawPath(well);
    if (image_ && !image_->isNull()) {
        const qreal dpr = devicePixelRatioF();
        const QSize box = (QSizeF(size() - QSize(8, 8)) * dpr).toSize();
        if (scaled_.isNull() && !box.isEmpty()) {
            scaled_ = image_->scaled(box, Qt::KeepAspectRatio, Qt::SmoothTransformation);
            scaled_.setDevicePixelRatio(dpr);
        }
        const QSizeF shown = QSizeF(scaled_.size()) / dpr;
        painter.drawImage(QPointF((width() - shown.width()) / 2, (height() - shown.height()) / 2), scaled_);
        return;
    }
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(rect().adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap, placeholder_);
}
