#include "ui/console/ColorSwatch.h"

#include <QPainter>

ColorSwatch::ColorSwatch(const QColor& colour, QWidget* parent)
    : QAbstractButton(parent)
    , colour_(colour)
{
    setFixedSize(sizeHint());
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::NoFocus);
}

void ColorSwatch::setRinged(bool ringed)
{
    if (ringed == ringed_)
        return;
    ringed_ = ringed;
    update();
}

void ColorSwatch::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF centre = QRectF(rect()).center();
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour_);
    painter.drawEllipse(centre, 8, 8);
    if (ringed_) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(Qt::white, 2));
        painter.drawEllipse(centre, 10.5, 10.5);
    }
}
