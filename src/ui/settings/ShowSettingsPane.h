#pragma once

#include "ui/settings/SettingsPane.h"

class QComboBox;
class QFormLayout;
class QSlider;
class QToolButton;

// How slides change on the output, and the planned length of the show.
class ShowSettingsPane : public SettingsPane {
    Q_OBJECT
public:
    explicit ShowSettingsPane(AppModel& model, QWidget* parent = nullptr);

    // The duration slider: 0.12 s to 1.2 s in steps of 0.05 s (the last step
    // is shorter, so that 1.2 itself can be chosen).
    static constexpr double shortestFade = 0.12;
    static constexpr double longestFade = 1.2;
    static constexpr double fadeStep = 0.05;
    static double fadeAtStep(int step);
    // The step nearest to a duration that may lie between the steps.
    static int stepForFade(double seconds);
    static int fadeSteps();

    // The planned duration: whole minutes, 0 to 180 in steps of 5.
    static constexpr int planStep = 5;
    static constexpr int longestPlan = 180;

protected:
    void update() override;

private:
    int plannedMinutes() const;
    void stepPlan(int direction);

    QFormLayout* transition_;
    QComboBox* style_;
    QWidget* durationRow_;
    QSlider* duration_;
    QLabel* current_;
    QLabel* plan_;
    QToolButton* planLess_;
    QToolButton* planMore_;
};
