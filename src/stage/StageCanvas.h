#pragma once

#include "model/OutputTypes.h"

#include <QWidget>

class AppModel;
namespace obs { class Follower; }

// The operator's large slide view. Shows the stage preview with all markup and
// turns hover, drags, pinches and the wheel into model calls. It never takes
// keyboard focus, so the console's keys keep working.
class StageCanvas : public QWidget {
    Q_OBJECT

public:
    explicit StageCanvas(AppModel& model, QWidget* parent = nullptr);

    // Where the audience's picture sits: the largest rectangle of the output
    // frame's aspect, centred. Markup is normalised to that picture, so input
    // is normalised against this rectangle and lands where it is drawn.
    QRectF pictureRect() const;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void refresh();
    QPointF normalised(QPointF position) const;
    bool isDragTool() const;
    void pinchTo(double magnification);

    AppModel& model_;
    obs::Follower* follower_;
    OutputFrameState state_;
    QSizeF aspect_{16, 9};
    bool dragging_ = false;
    bool pressPending_ = false;
    QPointF pressPoint_;
    double pinchRunning_ = 1.0;
    double pinchReported_ = 1.0;
};
