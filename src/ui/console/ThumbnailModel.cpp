#include "ui/console/ThumbnailModel.h"

void ThumbnailModel::show(Snapshot snapshot, bool newDocument)
{
    if (!newDocument && snapshot == snapshot_)
        return;
    if (newDocument || snapshot.pageCount != snapshot_.pageCount) {
        beginResetModel();
        snapshot_ = std::move(snapshot);
        endResetModel();
        return;
    }
    snapshot_ = std::move(snapshot);
    if (snapshot_.pageCount > 0)
        emit dataChanged(index(0), index(snapshot_.pageCount - 1));
}

int ThumbnailModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : snapshot_.pageCount;
}

QVariant ThumbnailModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= snapshot_.pageCount)
        return {};
    const int row = index.row();
    switch (role) {
    case Qt::DisplayRole: return QString::number(row + 1);
    case ImageRole: {
        const auto it = snapshot_.images.find(row);
        return it != snapshot_.images.end() && it->second ? QVariant::fromValue(*it->second) : QVariant();
    }
    case CurrentRole: return row == snapshot_.current;
    case FrozenRole: return row == snapshot_.frozen;
    case CueRole: {
        const auto it = snapshot_.cues.find(row);
        return it != snapshot_.cues.end() ? QVariant(it->second) : QVariant();
    }
    default: return {};
    }
}
