#include "ui/console/ToolsSection.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ColorSwatch.h"
#include "ui/console/ConsoleStyle.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace {
// The slider counts tenths: 12 … 60 for a scale of 1.2 … 6.0.
constexpr int zoomSteps = 10;

QString toolIconName(StageTool tool)
{
    switch (tool) {
    case StageTool::pointer: return QStringLiteral("input-mouse");
    case StageTool::laser: return QStringLiteral("media-record");
    case StageTool::marker: return QStringLiteral("draw-freehand");
    case StageTool::frame: return QStringLiteral("draw-rectangle");
    case StageTool::zoom: return QStringLiteral("zoom-in");
    }
    return {};
}
}

ToolsSection::ToolsSection(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    auto* layout = beginSection(QStringLiteral("tools"), QStringLiteral("preferences-other"), ConsoleStyle::indigo());
    blackout_ = new QCheckBox(this);
    blackout_->setObjectName(QStringLiteral("blackoutToggle"));
    freeze_ = new QCheckBox(this);
    freeze_->setObjectName(QStringLiteral("freezeToggle"));
    layout->addWidget(blackout_);
    layout->addWidget(freeze_);
    connect(blackout_, &QCheckBox::clicked, this, [this] { model_.toggleBlackout(); });
    connect(freeze_, &QCheckBox::clicked, this, [this] { model_.toggleFreeze(); });

    auto* row = new QHBoxLayout;
    row->setSpacing(4);
    for (StageTool tool : stageTools.all()) {
        auto* button = new QToolButton(this);
        button->setObjectName(QStringLiteral("tool.") + stageTools.rawValue(tool));
        button->setIcon(ConsoleStyle::icon(toolIconName(tool)));
        button->setIconSize(QSize(22, 22));
        button->setCheckable(true);
        button->setFocusPolicy(Qt::NoFocus);
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        button->setMinimumHeight(34);
        connect(button, &QToolButton::clicked, this, [this, tool] { model_.setTool(tool); });
        row->addWidget(button, 1);
        tools_.push_back(button);
    }
    layout->addLayout(row);

    auto* zoomRow = new QHBoxLayout;
    zoomLabel_ = new QLabel(this);
    zoom_ = new QSlider(Qt::Horizontal, this);
    zoom_->setObjectName(QStringLiteral("zoomSlider"));
    zoom_->setRange(12, 60);
    zoom_->setSingleStep(1);
    zoom_->setPageStep(5);
    zoom_->setFocusPolicy(Qt::NoFocus);  // arrows belong to the clicker
    connect(zoom_, &QSlider::valueChanged, this,
            [this](int value) { model_.setZoomScale(double(value) / zoomSteps); });
    zoomRow->addWidget(zoomLabel_);
    zoomRow->addWidget(zoom_, 1);
    layout->addLayout(zoomRow);

    undo_ = new QPushButton(ConsoleStyle::icon(QStringLiteral("edit-undo")), QString(), this);
    undo_->setObjectName(QStringLiteral("undoStroke"));
    clear_ = new QPushButton(ConsoleStyle::icon(QStringLiteral("edit-clear")), QString(), this);
    clear_->setObjectName(QStringLiteral("clearMarks"));
    connect(undo_, &QPushButton::clicked, this, [this] { model_.undoAnnotation(); });
    connect(clear_, &QPushButton::clicked, this, [this] { model_.clearAnnotations(); });
    layout->addWidget(undo_);
    layout->addWidget(clear_);

    colourLabel_ = new QLabel(this);
    colourLabel_->setWordWrap(true);
    layout->addWidget(colourLabel_);
    auto* swatches = new QHBoxLayout;
    swatches->setSpacing(4);
    for (const MarkColor& colour : MarkColor::presets()) {
        auto* swatch = new ColorSwatch(QColor::fromRgbF(float(colour.red), float(colour.green), float(colour.blue)), this);
        connect(swatch, &ColorSwatch::clicked, this, [this, colour] { model_.chooseMarkColor(colour); });
        swatches->addWidget(swatch);
        swatches_.push_back(swatch);
    }
    swatches->addStretch(1);
    layout->addLayout(swatches);
    startFollowing();
}

void ToolsSection::refresh()
{
    blackout_->setText(L10n::t(QStringLiteral("blackout")));
    freeze_->setText(L10n::t(QStringLiteral("freeze")));
    {
        const QSignalBlocker quietBlackout(blackout_);
        const QSignalBlocker quietFreeze(freeze_);
        blackout_->setChecked(model_.isBlackout());
        freeze_->setChecked(model_.isFrozen());
    }
    const StageTool active = model_.stageTool();
    const auto all = stageTools.all();
    const QString accent = ConsoleStyle::mark().name();
    for (std::size_t i = 0; i < all.size(); ++i) {
        QToolButton* button = tools_[i];
        const bool on = all[i] == active;
        button->setToolTip(L10n::t(stageToolTitleKey(all[i])));
        button->setChecked(on);
        button->setStyleSheet(on ? QStringLiteral("QToolButton { background: %1; border: 1px solid %1; border-radius: 6px; }").arg(accent)
                                 : QStringLiteral("QToolButton { border: 1px solid #55575e; border-radius: 6px; }"));
    }
    zoomLabel_->setText(L10n::t(QStringLiteral("zoom")));
    {
        const QSignalBlocker quiet(zoom_);
        zoom_->setValue(int(std::lround(model_.zoomScale() * zoomSteps)));
    }
    undo_->setText(L10n::t(QStringLiteral("undo.stroke")));
    clear_->setText(L10n::t(QStringLiteral("clear.marks")));
    undo_->setEnabled(!model_.annotationUndo().empty());
    const QString key = model_.pageKey();
    const auto strokes = model_.strokesByPage().find(key);
    const auto frames = model_.framesByPage().find(key);
    const bool hasMarks = (strokes != model_.strokesByPage().end() && !strokes->second.empty())
                          || (frames != model_.framesByPage().end() && !frames->second.empty());
    clear_->setEnabled(hasMarks);
    colourLabel_->setText(L10n::t(QStringLiteral("mark.color")));
    const MarkColor current = model_.markColor();
    const auto& presets = MarkColor::presets();
    for (std::size_t i = 0; i < presets.size(); ++i)
        swatches_[i]->setRinged(presets[i] == current);
}
