#pragma once

#include "ui/settings/SettingsPane.h"

class QComboBox;

// The interface language, each language named in its own words.
class InterfaceSettingsPane : public SettingsPane {
    Q_OBJECT
public:
    explicit InterfaceSettingsPane(AppModel& model, QWidget* parent = nullptr);

protected:
    void update() override;

private:
    QComboBox* language_;
};
