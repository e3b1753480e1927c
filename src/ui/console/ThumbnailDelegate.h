#pragma once

#include <QStyledItemDelegate>

// Draws one thumbnail cell: the page 136 × 78 with rounded corners, its
// number, the current page's highlight, the frozen page's snowflake and the
// cue's bookmark and title.
class ThumbnailDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    static constexpr int imageWidth = 136;
    static constexpr int imageHeight = 78;

    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};
