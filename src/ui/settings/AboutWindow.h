#pragma once

#include <QWidget>

class AppModel;
class QLabel;
class QPushButton;
namespace obs { class Follower; }

// The About window: icon, name, version, tagline and developer, and a way to
// the developer's web site.
class AboutWindow : public QWidget {
    Q_OBJECT
public:
    explicit AboutWindow(AppModel& model, QWidget* parent = nullptr);

    static constexpr int windowWidth = 380;

private:
    void update();

    AppModel& model_;
    QLabel* version_;
    QLabel* tagline_;
    QLabel* developer_;
    QPushButton* site_;
    obs::Follower* follower_;
};
