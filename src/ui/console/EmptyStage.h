#pragma once

#include "ui/console/ConsolePart.h"

class QLabel;
class QListWidget;
class QPushButton;

// What the stage shows with no document: the three ways in and the recent
// files.
class EmptyStage : public ConsolePart {
    Q_OBJECT

public:
    explicit EmptyStage(AppModel& model, QWidget* parent = nullptr);

protected:
    void refresh() override;

private:
    QLabel* subtitle_;
    QPushButton* openPdf_;
    QPushButton* openFolder_;
    QPushButton* openShow_;
    QLabel* recentTitle_;
    QListWidget* recents_;
};
