#include "ui/console/OutputSection.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleStyle.h"
#include "ui/console/ConsoleTexts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

namespace {
// Fills `box` with `items` (text, value) only when they differ from what it
// holds, so an open popup is not torn down by an unrelated change; then
// selects the row of `current`.
void fill(QComboBox* box, const std::vector<std::pair<QString, QVariant>>& items, const QVariant& current)
{
    const QSignalBlocker quiet(box);
    bool same = box->count() == static_cast<int>(items.size());
    for (int i = 0; same && i < box->count(); ++i)
        same = box->itemText(i) == items[static_cast<std::size_t>(i)].first
               && box->itemData(i) == items[static_cast<std::size_t>(i)].second;
    if (!same) {
        box->clear();
        for (const auto& [text, value] : items)
            box->addItem(text, value);
    }
    box->setCurrentIndex(box->findData(current));
}

void check(QCheckBox* box, bool on)
{
    const QSignalBlocker quiet(box);
    box->setChecked(on);
}
}

OutputSection::OutputSection(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    auto* layout = beginSection(QStringLiteral("output"), QStringLiteral("video-display"), ConsoleStyle::teal());
    auto* grid = new QGridLayout;
    grid->setColumnStretch(1, 1);
    layout->addLayout(grid);
    const auto row = [&](QLabel*& label, QWidget* field) {
        label = new QLabel(this);
        const int r = grid->rowCount();
        grid->addWidget(label, r, 0);
        grid->addWidget(field, r, 1);
    };
    screen_ = new QComboBox(this);
    screen_->setObjectName(QStringLiteral("screenPicker"));
    row(screenLabel_, screen_);
    format_ = new QComboBox(this);
    format_->setObjectName(QStringLiteral("aspectPicker"));
    row(formatLabel_, format_);
    width_ = new QSpinBox(this);
    height_ = new QSpinBox(this);
    for (QSpinBox* box : {width_, height_}) {
        box->setRange(1, 16384);
        box->setKeyboardTracking(false);  // the value is taken once typed
    }
    row(widthLabel_, width_);
    row(heightLabel_, height_);
    fit_ = new QComboBox(this);
    fit_->setObjectName(QStringLiteral("fitPicker"));
    row(fitLabel_, fit_);
    connect(screen_, &QComboBox::activated, this,
            [this](int index) { model_.selectDisplay(screen_->itemData(index).toUInt()); });
    connect(format_, &QComboBox::activated, this, [this](int index) {
        if (auto mode = aspectModes.fromRaw(format_->itemData(index).toString()))
            model_.setAspect(*mode);
    });
    connect(fit_, &QComboBox::activated, this, [this](int index) {
        if (auto fit = contentFits.fromRaw(fit_->itemData(index).toString()))
            model_.setContentFit(*fit);
    });
    connect(width_, &QSpinBox::valueChanged, this, [this](int value) { model_.setCustomSize(value, 0); });
    connect(height_, &QSpinBox::valueChanged, this, [this](int value) { model_.setCustomSize(0, value); });

    const auto toggle = [&](const char* name) {
        auto* box = new QCheckBox(this);
        box->setObjectName(QString::fromLatin1(name));
        layout->addWidget(box);
        return box;
    };
    show_ = toggle("showOutput");
    onTop_ = toggle("outputOnTop");
    hideCursor_ = toggle("hideCursor");
    syphon_ = toggle("videoSource");
    connect(show_, &QCheckBox::clicked, this, [this](bool on) {
        if (on != model_.isOutputVisible.peek())
            model_.toggleOutputVisible();
    });
    connect(onTop_, &QCheckBox::clicked, this, [this](bool on) { model_.setOutputAlwaysOnTop(on); });
    connect(hideCursor_, &QCheckBox::clicked, this, [this](bool on) { model_.setHideOutputCursor(on); });
    connect(syphon_, &QCheckBox::clicked, this, [this](bool on) { model_.setSyphonEnabled(on); });
    status_ = new QLabel(this);
    status_->setObjectName(QStringLiteral("sourceStatus"));
    status_->setWordWrap(true);
    status_->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(status_);
    startFollowing();
}

void OutputSection::refresh()
{
    screenLabel_->setText(L10n::t(QStringLiteral("screen")));
    formatLabel_->setText(L10n::t(QStringLiteral("format")));
    widthLabel_->setText(L10n::t(QStringLiteral("width")));
    heightLabel_->setText(L10n::t(QStringLiteral("height")));
    fitLabel_->setText(L10n::t(QStringLiteral("fit")));

    std::vector<std::pair<QString, QVariant>> screens;
    for (const OutputDisplay& display : model_.displays())
        screens.emplace_back(display.shortLabel(), QVariant::fromValue(display.id));
    const auto preferred = model_.preferredOutputDisplay();
    fill(screen_, screens, preferred ? QVariant::fromValue(preferred->id) : QVariant());
    screen_->setEnabled(!screens.empty());

    std::vector<std::pair<QString, QVariant>> aspects;
    for (const auto& [mode, raw] : aspectModes.entries)
        aspects.emplace_back(aspectModeTitle(mode), QString::fromLatin1(raw));
    const AspectMode aspect = model_.aspect();
    fill(format_, aspects, aspectModes.rawValue(aspect));
    const bool custom = aspect == AspectMode::custom;
    for (QWidget* w : std::initializer_list<QWidget*>{widthLabel_, width_, heightLabel_, height_})
        w->setVisible(custom);
    {
        const QSignalBlocker quietWidth(width_);
        const QSignalBlocker quietHeight(height_);
        width_->setValue(model_.customWidth());
        height_->setValue(model_.customHeight());
    }
    fill(fit_,
         {{L10n::t(QStringLiteral("fit.contain")), QStringLiteral("contain")},
          {L10n::t(QStringLiteral("fit.cover")), QStringLiteral("cover")}},
         contentFits.rawValue(model_.contentFit()));

    show_->setText(L10n::t(QStringLiteral("output.show")));
    onTop_->setText(L10n::t(QStringLiteral("output.on_top")));
    hideCursor_->setText(L10n::t(QStringLiteral("output.hide_cursor")));
    syphon_->setText(L10n::t(QStringLiteral("syphon.toggle")));
    check(show_, model_.isOutputVisible());
    check(onTop_, model_.outputAlwaysOnTop());
    check(hideCursor_, model_.hideOutputCursor());
    check(syphon_, model_.isSyphonEnabled());
    status_->setText(ConsoleTexts::syphonStatus(model_));
}
