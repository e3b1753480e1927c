#pragma once

#include "ui/console/ConsolePart.h"

class QLabel;
class QPushButton;
class QTimer;
class QToolButton;

// Time of day, the show's elapsed time and, with a plan, the time left;
// pause or resume and reset. Redrawn four times a second.
class TimerBar : public ConsolePart {
    Q_OBJECT

public:
    explicit TimerBar(AppModel& model, QWidget* parent = nullptr);

protected:
    void refresh() override;

private:
    void tick();

    QTimer* ticker_;
    QLabel* clock_;
    QLabel* elapsed_;
    QLabel* left_;
    QToolButton* pause_;
    QPushButton* reset_;
};
