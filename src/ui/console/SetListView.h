#pragma once

#include <QListWidget>

#include <vector>

class AppModel;

// The set's rows. Reordering by drag and deleting (Delete key, context menu)
// end in model operations; the rows are then rebuilt from the model, never
// moved by the widget itself. Files dragged in from outside go on to the
// window, which takes them into the set.
class SetListView : public QListWidget {
    Q_OBJECT

public:
    explicit SetListView(AppModel& model, QWidget* parent = nullptr);
    // The row a drop at `position` (viewport coordinates) lands before.
    int dropRow(QPoint position) const;
    // The text of the context menu's one command.
    static QString removeText();
    // The rows a drag of this list's own rows carries; none for anything else.
    std::vector<int> draggedRows(const QMimeData* mime) const;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void removeRow(int row);

    AppModel& model_;
};
