#pragma once

#include <QAbstractButton>

// One 16-point colour circle of the mark palette; the chosen one is ringed.
class ColorSwatch : public QAbstractButton {
    Q_OBJECT

public:
    ColorSwatch(const QColor& colour, QWidget* parent = nullptr);
    void setRinged(bool ringed);
    bool isRinged() const { return ringed_; }
    QSize sizeHint() const override { return {24, 24}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor colour_;
    bool ringed_ = false;
};
