#include "ui/settings/ShowSettingsPane.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>

#include <algorithm>
#include <cmath>

double ShowSettingsPane::fadeAtStep(int step)
{
    return std::min(shortestFade + fadeStep * step, longestFade);
}

int ShowSettingsPane::fadeSteps()
{
    return static_cast<int>(std::ceil((longestFade - shortestFade) / fadeStep - 1e-9));
}

int ShowSettingsPane::stepForFade(double seconds)
{
    int best = 0;
    for (int step = 1; step <= fadeSteps(); ++step)
        if (std::abs(fadeAtStep(step) - seconds) < std::abs(fadeAtStep(best) - seconds))
            best = step;
    return best;
}

ShowSettingsPane::ShowSettingsPane(AppModel& model, QWidget* parent)
    : SettingsPane(model, parent)
{
    transition_ = addSection(QStringLiteral("transition.section"));
    style_ = addPicker<TransitionStyle>(
        transition_, QStringLiteral("transition.between"), QStringLiteral("transitionPicker"), transitionStyles.all(),
        [](TransitionStyle style) {
            return L10n::t(style == TransitionStyle::fade ? QStringLiteral("transition.fade") : QStringLiteral("transition.none"));
        },
        [this](TransitionStyle style) { model_.setTransitionStyle(style); });

    // The slider between its end labels; the lower one reads 0.1 on purpose.
    durationRow_ = new QWidget(this);
    auto* row = new QHBoxLayout(durationRow_);
    row->setContentsMargins(0, 0, 0, 0);
    duration_ = new QSlider(Qt::Horizontal, durationRow_);
    duration_->setObjectName(QStringLiteral("fadeDuration"));
    duration_->setRange(0, fadeSteps());
    duration_->setPageStep(2);
    row->addWidget(new QLabel(QStringLiteral("0.1"), durationRow_));
    row->addWidget(duration_, 1);
    row->addWidget(new QLabel(QStringLiteral("1.2"), durationRow_));
    addRow(transition_, QStringLiteral("transition.duration"), durationRow_);
    connect(duration_, &QSlider::valueChanged, this,
            [this](int step) { model_.setTransitionDuration(fadeAtStep(step)); });
    current_ = new QLabel(this);
    current_->setObjectName(QStringLiteral("fadeNow"));
    addRow(transition_, QStringLiteral("transition.now"), current_);
    addHelp(transition_, QStringLiteral("transition.help"));

    QFormLayout* timer = addSection(QStringLiteral("timer.section"));
    auto* stepper = new QWidget(this);
    auto* line = new QHBoxLayout(stepper);
    line->setContentsMargins(0, 0, 0, 0);
    plan_ = new QLabel(stepper);
    plan_->setObjectName(QStringLiteral("planText"));
    planLess_ = new QToolButton(stepper);
    planLess_->setObjectName(QStringLiteral("planLess"));
    planLess_->setText(QStringLiteral("−"));
    planLess_->setAutoRepeat(true);
    planMore_ = new QToolButton(stepper);
    planMore_->setObjectName(QStringLiteral("planMore"));
    planMore_->setText(QStringLiteral("+"));
    planMore_->setAutoRepeat(true);
    line->addWidget(plan_, 1);
    line->addWidget(planLess_);
    line->addWidget(planMore_);
    timer->addRow(stepper);
    connect(planLess_, &QToolButton::clicked, this, [this] { stepPlan(-1); });
    connect(planMore_, &QToolButton::clicked, this, [this] { stepPlan(+1); });
    addHelp(timer, QStringLiteral("timer.help"));

    follow();
}

int ShowSettingsPane::plannedMinutes() const
{
    // Whole minutes; a negative plan (no plan) reads as none.
    const double minutes = model_.plannedDuration() / 60.0;
    if (!(minutes > 0))
        return 0;
    return static_cast<int>(std::min(std::trunc(minutes), double(longestPlan)));
}

void ShowSettingsPane::stepPlan(int direction)
{
    const int minutes = std::clamp(plannedMinutes() + direction * planStep, 0, longestPlan);
    model_.setPlannedDuration(minutes * 60.0);
}

void ShowSettingsPane::update()
{
    const bool fade = model_.transitionStyle() == TransitionStyle::fade;
    showChoice(style_, model_.transitionStyle());

    // The duration matters only for a dissolve.
    transition_->setRowVisible(durationRow_, fade);
    transition_->setRowVisible(current_, fade);
    const double seconds = model_.transitionDuration();
    {
        const QSignalBlocker block(duration_);
        // A duration between the steps (from a show file) is kept as it is
        // until the operator moves the slider.
        if (std::abs(fadeAtStep(duration_->value()) - seconds) > 1e-9)
            duration_->setValue(stepForFade(seconds));
    }
    current_->setText(L10n::t(QStringLiteral("transition.seconds"), seconds));

    const int minutes = plannedMinutes();
    plan_->setText(minutes == 0 ? L10n::t(QStringLiteral("timer.none"))
                                : L10n::t(QStringLiteral("timer.plan"), minutes));
    planLess_->setEnabled(minutes > 0);
    planMore_->setEnabled(minutes < longestPlan);
}
