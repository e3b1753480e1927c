#include "OutputContentView.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "output/SharedOutputFrame.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>

OutputContentView::OutputContentView(AppModel& model, QWidget* parent)
    : CompositedSlideView(parent)
    , model_(model)
{
    follower_ = new obs::Follower([this] { setState(model_.outputFrameState()); }, this);
    follower_->start();
}

QMenu* OutputContentView::makeContextMenu(QWidget* parent)
{
    auto* menu = new QMenu(parent);
    menu->addAction(L10n::t(QStringLiteral("slide.prev")), menu, [this] { model_.goToPreviousSlide(); });
    menu->addAction(L10n::t(QStringLiteral("slide.next")), menu, [this] { model_.goToNextSlide(); });
    menu->addSeparator();
    const QString blackout = model_.isBlackout.peek() ? QStringLiteral("blackout.off") : QStringLiteral("blackout");
    menu->addAction(L10n::t(blackout), menu, [this] { model_.toggleBlackout(); });
    return menu;
}

void OutputContentView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        model_.goToNextSlide();
        return;
    }
    CompositedSlideView::mousePressEvent(event);
}

void OutputContentView::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu* menu = makeContextMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
}

void OutputContentView::paintEvent(QPaintEvent* event)
{
    // Composited once for both when the publisher drew this very frame.
    if (!SharedOutputFrame::paintShared(model_, *this, state()))
        CompositedSlideView::paintEvent(event);
}
