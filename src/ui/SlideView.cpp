#include "SlideView.h"

#include <QPainter>

SlideView::SlideView(QWidget* parent)
    : QWidget(parent)
{
    setMinimumSize(320, 180);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void SlideView::setImage(std::shared_ptr<const QImage> image)
{
    if (image == image_)
        return;
    image_ = std::move(image);
    update();
}

void SlideView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    if (!image_ || image_->isNull())
        return;
    QSizeF size = image_->size();
    size.scale(QSizeF(width(), height()), Qt::KeepAspectRatio);
    const QRectF target((width() - size.width()) / 2, (height() - size.height()) / 2, size.width(), size.height());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, *image_);
}
