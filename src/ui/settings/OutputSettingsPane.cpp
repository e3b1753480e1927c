#include "ui/settings/OutputSettingsPane.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSpinBox>

namespace {
// The video source's name: fixed, the same in every language.
const QString sourceName = QStringLiteral("PDF Brelvonic");
}

OutputSettingsPane::OutputSettingsPane(AppModel& model, QWidget* parent)
    : SettingsPane(model, parent)
{
    QFormLayout* screen = addSection(QStringLiteral("screen"));
    screenForm_ = screen;
    display_ = new QComboBox(this);
    display_->setObjectName(QStringLiteral("displayPicker"));
    addRow(screen, QStringLiteral("display"), display_);
    connect(display_, &QComboBox::activated, this,
            [this](int index) { model_.selectDisplay(display_->itemData(index).toUInt()); });

    aspect_ = addPicker<AspectMode>(screen, QStringLiteral("format"), QStringLiteral("aspectPicker"), aspectModes.all(),
                                    &aspectModeTitle, [this](AspectMode mode) { model_.setAspect(mode); });

    width_ = makeSizeField(QStringLiteral("customWidth"));
    height_ = makeSizeField(QStringLiteral("customHeight"));
    addRow(screen, QStringLiteral("width_px"), width_);
    addRow(screen, QStringLiteral("height_px"), height_);

    fit_ = addPicker<ContentFit>(
        screen, QStringLiteral("slide_scale"), QStringLiteral("fitPicker"), contentFits.all(),
        [](ContentFit fit) { return L10n::t(fit == ContentFit::contain ? QStringLiteral("fit.contain") : QStringLiteral("fit.cover")); },
        [this](ContentFit fit) { model_.setContentFit(fit); });

    QFormLayout* window = addSection(QStringLiteral("output.window"));
    const auto addToggle = [&](const QString& name, const QString& key) {
        auto* toggle = new QCheckBox(this);
        toggle->setObjectName(name);
        keepText(toggle, key);
        window->addRow(toggle);
        return toggle;
    };
    showOutput_ = addToggle(QStringLiteral("showOutput"), QStringLiteral("output.show_toggle"));
    onTop_ = addToggle(QStringLiteral("outputOnTop"), QStringLiteral("output.on_top"));
    hideCursor_ = addToggle(QStringLiteral("hideOutputCursor"), QStringLiteral("output.hide_cursor"));
    connect(showOutput_, &QCheckBox::clicked, this, [this](bool on) {
        if (on != model_.isOutputVisible.peek())
            model_.toggleOutputVisible();
    });
    connect(onTop_, &QCheckBox::clicked, this, [this](bool on) { model_.setOutputAlwaysOnTop(on); });
    connect(hideCursor_, &QCheckBox::clicked, this, [this](bool on) { model_.setHideOutputCursor(on); });

    // The same header in every language: it names the programs, not a feature.
    QFormLayout* source = addSection({}, QStringLiteral("Resolume / Syphon"));
    publish_ = new QCheckBox(this);
    publish_->setObjectName(QStringLiteral("publishSource"));
    keepText(publish_, QStringLiteral("syphon.publish"));
    source->addRow(publish_);
    connect(publish_, &QCheckBox::clicked, this, [this](bool on) { model_.setSyphonEnabled(on); });
    auto* name = new QLabel(sourceName, this);
    name->setTextInteractionFlags(Qt::TextSelectableByMouse);
    addRow(source, QStringLiteral("syphon.name"), name);
    frameSize_ = new QLabel(this);
    frameSize_->setObjectName(QStringLiteral("frameSize"));
    addRow(source, QStringLiteral("syphon.frame"), frameSize_);
    addHelp(source, QStringLiteral("syphon.help"));
    sourceStatus_ = addHelp(source);
    sourceStatus_->setObjectName(QStringLiteral("sourceStatus"));

    follow();
}

QSpinBox* OutputSettingsPane::makeSizeField(const QString& name)
{
    auto* field = new QSpinBox(this);
    field->setObjectName(name);
    field->setRange(smallestCustomSide, largestCustomSide);
    field->setGroupSeparatorShown(true);
    // Committed on Enter, on leaving the field or on a step, not at every
    // typed digit: the output must not jump through 1, 12, 128 on the way to 1280.
    field->setKeyboardTracking(false);
    connect(field, &QSpinBox::valueChanged, this, &OutputSettingsPane::commitCustomSize);
    return field;
}

void OutputSettingsPane::commitCustomSize()
{
    model_.setCustomSize(width_->value(), height_->value());
}

void OutputSettingsPane::update()
{
    // The displays, rebuilt only when the list itself changed.
    const auto& displays = model_.displays();
    if (displays != listed_) {
        const QSignalBlocker block(display_);
        display_->clear();
        for (const OutputDisplay& display : displays)
            display_->addItem(display.shortLabel(), display.id);
        listed_ = displays;
    }
    display_->setEnabled(!displays.empty());
    {
        const QSignalBlocker block(display_);
        const auto shown = model_.selectedDisplay();
        display_->setCurrentIndex(shown ? display_->findData(shown->id) : -1);
    }

    const AspectMode mode = model_.aspect();
    showChoice(aspect_, mode);

    // Sizes in the interface language's digits and grouping.
    const QLocale locale(appLanguages.rawValue(model_.interfaceLanguage()));
    for (auto [field, value] : {std::pair{width_, model_.customWidth()}, std::pair{height_, model_.customHeight()}}) {
        const QSignalBlocker block(field);
        if (field->locale() != locale)
            field->setLocale(locale);
        // Only a real change is written back, so that digits being typed
        // survive an update caused by something else.
        if (field->value() != value)
            field->setValue(value);
        screenForm_->setRowVisible(field, mode == AspectMode::custom);
    }

    showChoice(fit_, model_.contentFit());

    showOutput_->setChecked(model_.isOutputVisible());
    onTop_->setChecked(model_.outputAlwaysOnTop());
    hideCursor_->setChecked(model_.hideOutputCursor());
    publish_->setChecked(model_.isSyphonEnabled());

    const PixelSize size = model_.syphonPixelSize();
    frameSize_->setText(QStringLiteral("%1 × %2").arg(size.width).arg(size.height));
    const QString state = L10n::t(model_.isSyphonPublishing() ? QStringLiteral("syphon.live") : QStringLiteral("syphon.wait"));
    sourceStatus_->setText(L10n::t(QStringLiteral("syphon.status"), size.width, size.height, state));
}
