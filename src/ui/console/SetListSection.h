#pragma once

#include "ui/console/ConsolePart.h"

class QLabel;
class QPushButton;
class SetListView;

// The set: one row per PDF, the current one marked; add, open and save below.
class SetListSection : public ConsolePart {
    Q_OBJECT

public:
    explicit SetListSection(AppModel& model, QWidget* parent = nullptr);

protected:
    void refresh() override;

private:
    SetListView* list_;
    QLabel* empty_;
    QPushButton* add_;
    QPushButton* openFolder_;
    QPushButton* save_;
};
