#pragma once

#include "input/ClickerDevice.h"
#include "ui/settings/SettingsPane.h"

#include <vector>

class QCheckBox;
class QPushButton;
class QVBoxLayout;

// Whether presses are heard while another program is in front, the keys a
// remote can use, and which of the devices heard may turn slides.
class ClickerSettingsPane : public SettingsPane {
    Q_OBJECT
public:
    explicit ClickerSettingsPane(AppModel& model, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void update() override;

private:
    void rebuildDevices(const std::vector<ClickerDevice>& devices);

    QLabel* statusIcon_;
    QLabel* status_;
    QPushButton* access_;
    QWidget* deviceBox_;
    QVBoxLayout* deviceList_;
    QLabel* noDevices_;
    std::vector<ClickerDevice> listed_;
    std::vector<QCheckBox*> deviceTicks_;
};
