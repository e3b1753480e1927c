#pragma once

#include "ui/console/ConsolePart.h"

class QHBoxLayout;
class QLabel;
class StageCanvas;

// The live stage in its well over a dark backdrop, with the page badge, the
// status chips and the typed jump over it.
class StageView : public ConsolePart {
    Q_OBJECT

public:
    explicit StageView(AppModel& model, QWidget* parent = nullptr);
    StageCanvas* canvas() const { return canvas_; }

protected:
    void refresh() override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeOverlays();

    QWidget* well_;
    StageCanvas* canvas_;
    QLabel* badge_;
    QWidget* chips_;
    QHBoxLayout* chipRow_;
    QLabel* jump_;
};
