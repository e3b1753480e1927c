#pragma once

#include <QWidget>

class AppModel;

// The settings window. (Filled in by the settings work.)
class SettingsWindow : public QWidget {
    Q_OBJECT
public:
    explicit SettingsWindow(AppModel& model, QWidget* parent = nullptr);
};
