#pragma once

#include <QMainWindow>

#include <functional>
#include <vector>

class AppModel;
class QLabel;
class StageCanvas;
namespace obs { class Follower; }

// The operator's window: the current slide as large as it fits and its number.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(AppModel& model, QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    // Files, folders and show files dropped anywhere on the window.
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void update();

    AppModel& model_;
    StageCanvas* slide_;
    QLabel* pageLabel_;
    obs::Follower* follower_;
    // Shown over the whole window while a drag that carries files hovers.
    void setDropHighlight(bool shown);
    QLabel* dropHighlight_ = nullptr;
};
