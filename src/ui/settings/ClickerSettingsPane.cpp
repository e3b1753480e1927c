#include "ui/settings/ClickerSettingsPane.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// The two status marks, drawn rather than taken from an icon theme, which a
// desktop may not have.
QPixmap statusMark(bool allowed, qreal ratio)
{
    const int side = 16;
    QPixmap pixmap(qRound(side * ratio), qRound(side * ratio));
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (allowed) {
        painter.setBrush(QColor(0x2e, 0xa0, 0x43));
        painter.drawEllipse(QRectF(0.5, 0.5, side - 1, side - 1));
        painter.setPen(QPen(Qt::white, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPolyline(QPolygonF({QPointF(4.5, 8.5), QPointF(7, 11), QPointF(11.5, 5.5)}));
    } else {
        QPainterPath triangle;
        triangle.moveTo(side / 2.0, 1);
        triangle.lineTo(side - 0.5, side - 1.5);
        triangle.lineTo(0.5, side - 1.5);
        triangle.closeSubpath();
        painter.setBrush(QColor(0xe0, 0x8a, 0x00));
        painter.drawPath(triangle);
        painter.setBrush(Qt::white);
        painter.drawRoundedRect(QRectF(7.1, 5, 1.8, 5.5), 0.9, 0.9);
        painter.drawEllipse(QRectF(7.1, 11.4, 1.8, 1.8));
    }
    return pixmap;
}

// The key card: each row's label key and the keys it lists, either literal
// or (for the two hints) looked up.
struct KeyRow {
    const char* labelKey;
    const char* keys;
    bool keysAreTextKey;
};
constexpr KeyRow keyCard[] = {
    {"key.next", "→  ↓  Page Down  Space  Enter", false},
    {"key.prev", "←  ↑  Page Up  Delete", false},
    {"key.number", "key.number_hint", true},
    {"blackout", "B  .  Escape", false},
    {"freeze", "F", false},
    {"key.tools", "L  M  R  Z", false},
    {"clear.marks", "C", false},
    {"undo.stroke", "U", false},
    {"key.cues", "key.cues_hint", true},
};

}

ClickerSettingsPane::ClickerSettingsPane(AppModel& model, QWidget* parent)
    : SettingsPane(model, parent)
{
    QFormLayout* access = addSection(QStringLiteral("access"));
    auto* statusRow = new QWidget(this);
    auto* statusLine = new QHBoxLayout(statusRow);
    statusLine->setContentsMargins(0, 0, 0, 0);
    statusIcon_ = new QLabel(statusRow);
    status_ = new QLabel(statusRow);
    status_->setObjectName(QStringLiteral("trustStatus"));
    statusLine->addWidget(statusIcon_);
    statusLine->addWidget(status_, 1);
    addRow(access, QStringLiteral("status"), statusRow);
    addHelp(access, QStringLiteral("access.help"));
    access_ = new QPushButton(this);
    access_->setObjectName(QStringLiteral("requestAccess"));
    keepText(access_, QStringLiteral("access.system"));
    access->addRow(access_);
    connect(access_, &QPushButton::clicked, this, [this] { model_.promptClickerAccess(); });

    QFormLayout* keys = addSection(QStringLiteral("clicker.keys"));
    for (const KeyRow& row : keyCard) {
        auto* shown = new QLabel(this);
        if (row.keysAreTextKey)
            keepText(shown, QString::fromLatin1(row.keys));
        else
            shown->setText(QString::fromUtf8(row.keys));
        addRow(keys, QString::fromLatin1(row.labelKey), shown);
    }

    QFormLayout* devices = addSection(QStringLiteral("clicker.devices"));
    deviceBox_ = new QWidget(this);
    deviceBox_->setObjectName(QStringLiteral("clickerDevices"));
    deviceList_ = new QVBoxLayout(deviceBox_);
    deviceList_->setContentsMargins(0, 0, 0, 0);
    deviceList_->setSpacing(4);
    noDevices_ = new QLabel(deviceBox_);
    keepText(noDevices_, QStringLiteral("clicker.devices_none"));
    deviceList_->addWidget(noDevices_);
    devices->addRow(deviceBox_);
    addHelp(devices, QStringLiteral("clicker.devices_help"));

    follow();
}

void ClickerSettingsPane::showEvent(QShowEvent* event)
{
    SettingsPane::showEvent(event);
    model_.refreshClickerTrust();
}

void ClickerSettingsPane::rebuildDevices(const std::vector<ClickerDevice>& devices)
{
    for (QCheckBox* tick : deviceTicks_)
        delete tick;
    deviceTicks_.clear();
    for (const ClickerDevice& device : devices) {
        auto* tick = new QCheckBox(device.name, deviceBox_);
        tick->setToolTip(device.id);
        // Ticked: heard. Unticking leaves the device out from then on.
        connect(tick, &QCheckBox::clicked, this,
                [this, id = device.id](bool heard) { model_.setClickerDeviceIgnored(id, !heard); });
        deviceList_->addWidget(tick);
        deviceTicks_.push_back(tick);
    }
    noDevices_->setVisible(devices.empty());
}

void ClickerSettingsPane::update()
{
    const bool trusted = model_.clickerTrusted();
    status_->setText(L10n::t(trusted ? QStringLiteral("access.ok") : QStringLiteral("access.need")));
    statusIcon_->setPixmap(statusMark(trusted, devicePixelRatioF()));

    const auto& devices = model_.clickerDevices();
    // Names and ids decide the rows; a changed tick only moves its box.
    const auto sameRows = [&] {
        if (devices.size() != listed_.size())
            return false;
        for (std::size_t i = 0; i < devices.size(); ++i)
            if (devices[i].id != listed_[i].id || devices[i].name != listed_[i].name)
                return false;
        return true;
    };
    if (!sameRows())
        rebuildDevices(devices);
    listed_ = devices;
    for (std::size_t i = 0; i < devices.size(); ++i)
        deviceTicks_[i]->setChecked(!devices[i].ignored);
}
