#pragma once

#include <QMainWindow>

#include <functional>

#include <QPointer>

class AppModel;
class DropOverlay;
class EmptyStage;
class QAction;
class QSplitter;
class QStackedWidget;
class StageView;
class ThumbnailStrip;
namespace obs { class Follower; }

// The operator's console: the sidebar's sections and the detail area,
// assembled from their parts; each part follows the model by itself. The
// window adds only the toolbar, its title and drops of files anywhere on it.
// It handles no slide keys: the clicker hears them for every window.
class ConsoleWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit ConsoleWindow(AppModel& model, QWidget* parent = nullptr);
    ~ConsoleWindow() override;

    DropOverlay* dropOverlay() const { return dropOverlay_; }
    StageView* stage() const { return stage_; }
    ThumbnailStrip* thumbnails() const { return thumbnails_; }
    QWidget* sidebar() const { return sidebar_; }
    // The shell keeps one settings window for the menu and the toolbar alike.
    void setSettingsOpener(std::function<void()> open) { openSettings_ = std::move(open); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void refresh();
    void showSettings();
    // Files dragged over any widget of this window come here first.
    bool catchDrag(QEvent* event);
    void setDropHighlight(bool shown);
    // The sidebar at least as wide as its sections need, within its limits.
    void fitSidebar();

    AppModel& model_;
    obs::Follower* follower_;
    QAction* back_;
    QAction* forward_;
    QAction* open_;
    QAction* save_;
    QAction* settings_;
    QSplitter* split_;
    QWidget* sidebar_;
    QWidget* sections_;
    QStackedWidget* detail_;
    EmptyStage* empty_;
    QWidget* showing_;
    StageView* stage_;
    ThumbnailStrip* thumbnails_;
    DropOverlay* dropOverlay_;
    QPointer<QWidget> settingsWindow_;
    std::function<void()> openSettings_;
};
