#pragma once

#include "ui/console/ConsolePart.h"

class QLabel;
class QLineEdit;

// The operator's note for the current slide, edited in place.
class NoteBar : public ConsolePart {
    Q_OBJECT

public:
    explicit NoteBar(AppModel& model, QWidget* parent = nullptr);

protected:
    void refresh() override;

private:
    QLabel* title_;
    QLabel* caption_;
    QLineEdit* field_;
};
