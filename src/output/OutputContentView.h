#pragma once

#include "output/CompositedSlideView.h"

class AppModel;
namespace obs { class Follower; }

// What the output window shows: the audience's frame. A click pages on; the
// context menu pages and blacks out.
class OutputContentView : public CompositedSlideView {
    Q_OBJECT

public:
    explicit OutputContentView(AppModel& model, QWidget* parent = nullptr);

    // The context menu as it would open now (built fresh, texts localised).
    QMenu* makeContextMenu(QWidget* parent);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    // Shares the publisher's frame when it is this one (SharedOutputFrame).
    void paintEvent(QPaintEvent* event) override;

private:
    AppModel& model_;
    obs::Follower* follower_;
};
