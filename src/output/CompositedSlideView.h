#pragma once

#include "model/OutputTypes.h"

#include <QWidget>

// Shows one frame state through the compositor, filling the whole widget.
class CompositedSlideView : public QWidget {
    Q_OBJECT

public:
    explicit CompositedSlideView(QWidget* parent = nullptr);
    void setState(OutputFrameState state);
    const OutputFrameState& state() const { return state_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    OutputFrameState state_;
    QImage frame_;  // kept between paints: a new one per frame costs page faults
};
