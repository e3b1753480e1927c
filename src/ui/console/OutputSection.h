#pragma once

#include "ui/console/ConsolePart.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QSpinBox;

// Where and how the output shows: display, aspect (with a custom size),
// fit, the output toggles and the video source's state.
class OutputSection : public ConsolePart {
    Q_OBJECT

public:
    explicit OutputSection(AppModel& model, QWidget* parent = nullptr);

protected:
    void refresh() override;

private:
    QLabel* screenLabel_;
    QComboBox* screen_;
    QLabel* formatLabel_;
    QComboBox* format_;
    QLabel* widthLabel_;
    QSpinBox* width_;
    QLabel* heightLabel_;
    QSpinBox* height_;
    QLabel* fitLabel_;
    QComboBox* fit_;
    QCheckBox* show_;
    QCheckBox* onTop_;
    QCheckBox* hideCursor_;
    QCheckBox* syphon_;
    QLabel* status_;
};
