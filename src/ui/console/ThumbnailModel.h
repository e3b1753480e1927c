#pragma once

#include <QAbstractListModel>
#include <QImage>

#include <map>
#include <memory>

// The strip's rows, one per page of the current document: what each cell
// shows, copied from the model by the strip. Rows are only described here;
// the view asks for those it shows, so a long deck costs nothing up front.
class ThumbnailModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { ImageRole = Qt::UserRole + 1, CurrentRole, FrozenRole, CueRole };

    struct Snapshot {
        int pageCount = 0;
        int current = -1;
        int frozen = -1;  // the page a frozen output holds, else -1
        std::map<int, std::shared_ptr<const QImage>> images;
        std::map<int, QString> cues;  // page → the first cue's title

        bool operator==(const Snapshot&) const = default;
    };

    using QAbstractListModel::QAbstractListModel;
    // Takes a new snapshot: rows are rebuilt only when the page count (or
    // the document) changes; otherwise the cells are told to redraw.
    void show(Snapshot snapshot, bool newDocument);
    const Snapshot& snapshot() const { return snapshot_; }

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    Snapshot snapshot_;
};
