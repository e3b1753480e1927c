#include "ui/console/SetListView.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleStyle.h"

#include <QContextMenuEvent>
#include <QDataStream>
#include <QMimeData>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMenu>

SetListView::SetListView(AppModel& model, QWidget* parent)
    : QListWidget(parent)
    , model_(model)
{
    // Only the list's own rows are taken (see draggedRows); the drop itself
    // is the model's reorder.
    setDragDropMode(QAbstractItemView::DragDrop);
    setDragDropOverwriteMode(false);
    setDropIndicatorShown(true);
    setDefaultDropAction(Qt::MoveAction);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTextElideMode(Qt::ElideMiddle);
    setIconSize(QSize(18, 18));
    setUniformItemSizes(true);
}

QString SetListView::removeText()
{
    return L10n::t(QStringLiteral("remove"));
}

int SetListView::dropRow(QPoint position) const
{
    const QModelIndex index = indexAt(position);
    if (!index.isValid())
        return count();
    const QRect cell = visualRect(index);
    return position.y() < cell.center().y() ? index.row() : index.row() + 1;
}

void SetListView::removeRow(int row)
{
    const auto& set = model_.playlist.peek();
    if (row < 0 || row >= static_cast<int>(set.size()))
        return;
    model_.removePlaylistItem(set[static_cast<std::size_t>(row)].id);
}

void SetListView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        removeRow(currentRow());
        event->accept();
        return;
    }
    QListWidget::keyPressEvent(event);
}

void SetListView::contextMenuEvent(QContextMenuEvent* event)
{
    const QModelIndex index = indexAt(event->pos());
    if (!index.isValid())
        return;
    QMenu menu(this);
    menu.addAction(ConsoleStyle::icon(QStringLiteral("edit-delete")), removeText(),
                   this, [this, row = index.row()] { removeRow(row); });
    menu.exec(event->globalPos());
}

std::vector<int> SetListView::draggedRows(const QMimeData* mime) const
{
    std::vector<int> rows;
    const QString format = model()->mimeTypes().value(0);
    if (!mime || !mime->hasFormat(format))
        return rows;
    // The item views' own drag format: row, column and the item's roles.
    QByteArray data = mime->data(format);
    QDataStream stream(&data, QIODevice::ReadOnly);
    while (!stream.atEnd()) {
        int row = -1;
        int column = -1;
        QMap<int, QVariant> roles;
        stream >> row >> column >> roles;
        if (stream.status() != QDataStream::Ok)
            break;
        if (row >= 0 && std::find(rows.begin(), rows.end(), row) == rows.end())
            rows.push_back(row);
    }
    return rows;
}

void SetListView::dragEnterEvent(QDragEnterEvent* event)
{
    if (draggedRows(event->mimeData()).empty()) {
        event->ignore();  // files from outside: the window's drop
        return;
    }
    QListWidget::dragEnterEvent(event);
}

void SetListView::dragMoveEvent(QDragMoveEvent* event)
{
    if (draggedRows(event->mimeData()).empty()) {
        event->ignore();
        return;
    }
    QListWidget::dragMoveEvent(event);
}

void SetListView::dropEvent(QDropEvent* event)
{
    const std::vector<int> rows = draggedRows(event->mimeData());
    if (rows.empty()) {
        event->ignore();
        return;
    }
    // The widget moves nothing itself: the model reorders, the rows follow.
    event->setDropAction(Qt::IgnoreAction);
    event->accept();
    model_.movePlaylist(rows, dropRow(event->position().toPoint()));
}
