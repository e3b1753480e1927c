#pragma once

#include "ui/console/ConsolePart.h"

class QLabel;
class QPushButton;
class QTreeWidget;

// The cues of the current PDF: a click goes to a cue's slide, Delete or the
// context menu removes it. Shown only while a document is open.
class CuesSection : public ConsolePart {
    Q_OBJECT

public:
    explicit CuesSection(AppModel& model, QWidget* parent = nullptr);

protected:
    void refresh() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void removeRow(int row);

    QTreeWidget* list_;
    QLabel* hint_;
    QPushButton* add_;
};
