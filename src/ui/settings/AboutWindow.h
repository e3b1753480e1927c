#pragma once

#include <QWidget>

class AppModel;

// The About window. (Filled in by the settings work.)
class AboutWindow : public QWidget {
    Q_OBJECT
public:
    explicit AboutWindow(AppModel& model, QWidget* parent = nullptr);
};
