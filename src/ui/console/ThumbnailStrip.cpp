#include "ui/console/ThumbnailStrip.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleStyle.h"
#include "ui/console/ThumbnailDelegate.h"
#include "ui/console/ThumbnailModel.h"

#include <QContextMenuEvent>
#include <QListView>
#include <QMenu>
#include <QScrollBar>
#include <QVBoxLayout>

ThumbnailStrip::ThumbnailStrip(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    view_ = new QListView(this);
    view_->setObjectName(QStringLiteral("thumbnails"));
    view_->setFlow(QListView::LeftToRight);
    view_->setWrapping(false);
    view_->setUniformItemSizes(true);  // no cell is measured but the first
    view_->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    view_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view_->setSelectionMode(QAbstractItemView::NoSelection);
    view_->setFocusPolicy(Qt::NoFocus);
    view_->setMouseTracking(true);  // hover highlight
    view_->setFrameShape(QFrame::NoFrame);
    auto* delegate = new ThumbnailDelegate(view_);
    view_->setItemDelegate(delegate);
    cells_ = new ThumbnailModel(view_);
    view_->setModel(cells_);
    const int height = delegate->sizeHint({}, {}).height() + view_->horizontalScrollBar()->sizeHint().height() + 4;
    view_->setFixedHeight(height);
    view_->viewport()->installEventFilter(this);
    layout->addWidget(view_);
    connect(view_, &QListView::clicked, this, [this](const QModelIndex& index) { model_.goToPage(index.row()); });
    startFollowing();
}

void ThumbnailStrip::refresh()
{
    const PdfDocumentPtr document = model_.document();
    ThumbnailModel::Snapshot next;
    if (document) {
        next.pageCount = model_.pageCount();
        next.current = model_.pageIndex();
        next.frozen = model_.isFrozen() ? model_.frozenPageIndex() : -1;
        next.images = model_.thumbnails();
        for (const CueBookmark& cue : model_.currentCues())
            next.cues.emplace(cue.pageIndex, cue.title);
    }
    const bool newDocument = document.get() != document_;
    document_ = document.get();
    cells_->show(std::move(next), newDocument);
    const int current = cells_->snapshot().current;
    if (newDocument || current != shownPage_) {
        shownPage_ = current;
        if (current >= 0)
            view_->scrollTo(cells_->index(current), QAbstractItemView::EnsureVisible);
    }
}

bool ThumbnailStrip::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == view_->viewport() && event->type() == QEvent::ContextMenu) {
        auto* menuEvent = static_cast<QContextMenuEvent*>(event);
        const QModelIndex index = view_->indexAt(menuEvent->pos());
        if (!index.isValid())
            return true;
        QMenu menu(this);
        menu.addAction(ConsoleStyle::icon(QStringLiteral("bookmark-new")),
                       L10n::t(QStringLiteral("bookmark.on_slide_ellipsis"), index.row() + 1), this,
                       [this, page = index.row()] {
                           model_.goToPage(page);
                           model_.promptAddBookmark();
                       });
        menu.exec(menuEvent->globalPos());
        return true;
    }
    return ConsolePart::eventFilter(watched, event);
}
