#include "ui/console/StageView.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "stage/StageCanvas.h"
#include "ui/console/ConsoleStyle.h"
#include "ui/console/ConsoleTexts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>

namespace {
// A label that lets clicks and hover through to the stage below.
QLabel* overlayLabel(QWidget* parent, const QString& name)
{
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    return label;
}

QString chipStyle(const QColor& tint)
{
    return QStringLiteral("QLabel { color: white; background: rgba(%1, %2, %3, 210); border-radius: 13px;"
                          " padding: 4px 12px; font-weight: 600; }")
        .arg(tint.red())
        .arg(tint.green())
        .arg(tint.blue());
}

QColor markTint(const MarkColor& c)
{
    return QColor::fromRgbF(float(c.red), float(c.green), float(c.blue)).darker(130);
}
}

StageView::StageView(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    setObjectName(QStringLiteral("stage"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(14, 14, 14, 14);
    well_ = new QWidget(this);
    well_->setObjectName(QStringLiteral("stageWell"));
    auto* wellLayout = new QHBoxLayout(well_);
    wellLayout->setContentsMargins(2, 2, 2, 2);
    canvas_ = new StageCanvas(model, well_);
    wellLayout->addWidget(canvas_);
    well_->setStyleSheet(QStringLiteral("#stageWell { background: black; border: 1px solid #4a4c52; border-radius: 10px; }"));
    layout->addWidget(well_);

    badge_ = overlayLabel(this, QStringLiteral("pageBadge"));
    badge_->setStyleSheet(QStringLiteral("QLabel { color: white; background: rgba(0, 0, 0, 190); border: 1px solid rgba(255,255,255,60);"
                                         " border-radius: 8px; padding: 5px 12px; font-weight: 700; }"));
    ConsoleStyle::enlargeFont(badge_, 1.35, true);
    chips_ = new QWidget(this);
    chips_->setObjectName(QStringLiteral("statusChips"));
    chips_->setAttribute(Qt::WA_TransparentForMouseEvents);
    chipRow_ = new QHBoxLayout(chips_);
    chipRow_->setContentsMargins(0, 0, 0, 0);
    chipRow_->setSpacing(6);
    jump_ = overlayLabel(this, QStringLiteral("jumpOverlay"));
    jump_->setAlignment(Qt::AlignCenter);
    QFont digits(QStringLiteral("DejaVu Sans Mono"));
    digits.setStyleHint(QFont::Monospace);
    digits.setPointSize(72);
    digits.setBold(true);
    jump_->setFont(digits);
    jump_->setStyleSheet(QStringLiteral("QLabel { color: white; background: rgba(0, 0, 0, 150); border-radius: 18px; padding: 8px 28px; }"));
    startFollowing();
}

void StageView::refresh()
{
    const bool open = model_.document() != nullptr;
    badge_->setText(open ? ConsoleTexts::pageLabel(model_) : QString());
    badge_->setVisible(open);

    // The chips: blackout, freeze and the active tool, only while any is on.
    struct Chip {
        QString title;
        QString icon;
        QColor tint;
    };
    std::vector<Chip> wanted;
    if (ConsoleTexts::hasActiveStatus(model_)) {
        if (model_.isBlackout())
            wanted.push_back({L10n::t(QStringLiteral("blackout")), QStringLiteral("weather-clear-night"), ConsoleStyle::orange()});
        if (model_.isFrozen())
            wanted.push_back({L10n::t(QStringLiteral("frozen")), QStringLiteral("weather-snow"), ConsoleStyle::blue()});
        const StageTool tool = model_.stageTool();
        if (tool != StageTool::pointer) {
            const QColor tint = tool == StageTool::laser ? markTint(model_.markColor()) : ConsoleStyle::mark();
            wanted.push_back({L10n::t(stageToolTitleKey(tool)), QString(), tint});
        }
    }
    const QList<QLabel*> have = chips_->findChildren<QLabel*>(Qt::FindDirectChildrenOnly);
    for (qsizetype i = qsizetype(wanted.size()); i < have.size(); ++i)
        delete have[i];
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        QLabel* chip = qsizetype(i) < have.size() ? have[qsizetype(i)] : nullptr;
        if (!chip) {
            chip = overlayLabel(chips_, QStringLiteral("statusChip"));
            ConsoleStyle::enlargeFont(chip, 1.15, true);
            chipRow_->addWidget(chip);
        }
        chip->setText(wanted[i].title);
        chip->setStyleSheet(chipStyle(wanted[i].tint));
    }
    chips_->setVisible(!wanted.empty());

    const QString typed = model_.jumpBuffer();
    jump_->setText(typed);
    jump_->setVisible(!typed.isEmpty());
    placeOverlays();
}

void StageView::resizeEvent(QResizeEvent* event)
{
    ConsolePart::resizeEvent(event);
    placeOverlays();
}

void StageView::placeOverlays()
{
    const QRect stage = well_->geometry();
    badge_->adjustSize();
    badge_->move(stage.left() + 12, stage.top() + 12);
    badge_->raise();
    chips_->adjustSize();
    chips_->move(stage.right() - chips_->width() - 12, stage.top() + 12);
    // Below the badge when the two would meet.
    if (badge_->isVisible() && chips_->x() < badge_->geometry().right() + 8)
        chips_->move(stage.left() + 12, badge_->geometry().bottom() + 8);
    chips_->raise();
    jump_->adjustSize();
    jump_->move(stage.center() - QPoint(jump_->width() / 2, jump_->height() / 2));
    jump_->raise();
}

void StageView::paintEvent(QPaintEvent*)
{
    // The backdrop: a dark gradient that keeps the eye on the slide.
    QPainter painter(this);
    QLinearGradient backdrop(0, 0, 0, height());
    backdrop.setColorAt(0, QColor(28, 30, 36));
    backdrop.setColorAt(1, QColor(10, 11, 14));
    painter.fillRect(rect(), backdrop);
    // The well's shadow, drawn here: an effect on the well would route every
    // repaint of the stage through an extra picture.
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF well = QRectF(well_->geometry()).translated(0, 4);
    for (int i = 1; i <= 6; ++i) {
        painter.setBrush(QColor(0, 0, 0, 22));
        painter.drawRoundedRect(well.adjusted(-i, -i, i, i), 10 + i, 10 + i);
    }
}
