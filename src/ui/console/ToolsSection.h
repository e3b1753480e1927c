#pragma once

#include "ui/console/ConsolePart.h"

#include <vector>

class ColorSwatch;
class QCheckBox;
class QLabel;
class QPushButton;
class QSlider;
class QToolButton;

// Blackout and freeze, the five stage tools, the zoom, undo and clear, and
// the mark colour.
class ToolsSection : public ConsolePart {
    Q_OBJECT

public:
    explicit ToolsSection(AppModel& model, QWidget* parent = nullptr);

protected:
    void refresh() override;

private:
    QCheckBox* blackout_;
    QCheckBox* freeze_;
    std::vector<QToolButton*> tools_;
    QLabel* zoomLabel_;
    QSlider* zoom_;
    QPushButton* undo_;
    QPushButton* clear_;
    QLabel* colourLabel_;
    std::vector<ColorSwatch*> swatches_;
};
