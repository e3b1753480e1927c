#include "CompositedSlideView.h"

#include "output/OutputCompositor.h"

#include <QPainter>

CompositedSlideView::CompositedSlideView(QWidget* parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    setPalette(black);
    setAutoFillBackground(false);
}

void CompositedSlideView::setState(OutputFrameState state)
{
    if (state == state_)
        return;
    state_ = std::move(state);
    update();
}

void CompositedSlideView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    OutputCompositor::drawBuffered(state_, painter, QSizeF(size()), frame_);
}
