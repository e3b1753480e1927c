#pragma once

#include <QWidget>

class AppModel;
class QTabWidget;
namespace obs { class Follower; }

// The settings window: one tab per pane, in a window of fixed size.
class SettingsWindow : public QWidget {
    Q_OBJECT
public:
    explicit SettingsWindow(AppModel& model, QWidget* parent = nullptr);

    static constexpr int windowWidth = 520;
    static constexpr int windowHeight = 580;

protected:
    // Each time it comes up, the displays and the input permission are read
    // afresh: either may have changed while the window was closed.
    void showEvent(QShowEvent* event) override;

private:
    void update();

    AppModel& model_;
    QTabWidget* tabs_;
    obs::Follower* follower_;
};
