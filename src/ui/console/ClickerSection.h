#pragma once

#include "ui/console/ConsolePart.h"

class QLabel;
class QPushButton;
class QWidget;

// Whether the clicker is heard while another program has the focus, the way
// to allow it when it is not, and the keys to remember.
class ClickerSection : public ConsolePart {
    Q_OBJECT

public:
    explicit ClickerSection(AppModel& model, QWidget* parent = nullptr);

protected:
    void refresh() override;

private:
    QWidget* activeRow_;
    QLabel* active_;
    QLabel* needAccess_;
    QPushButton* openSettings_;
    QLabel* hint_;
};
