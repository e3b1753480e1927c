#pragma once

#include "ui/settings/SettingsPane.h"

class QPushButton;

// The program's name, version and developer, and the recent documents.
class AboutSettingsPane : public SettingsPane {
    Q_OBJECT
public:
    explicit AboutSettingsPane(AppModel& model, QWidget* parent = nullptr);

protected:
    void update() override;

private:
    QLabel* version_;
    QPushButton* clearRecents_;
};
