#pragma once

#include "ui/console/ConsolePart.h"

class QListView;
class ThumbnailModel;

// A row of the current document's pages. A click goes to a page; the
// context menu cues one. The current page is kept in view.
class ThumbnailStrip : public ConsolePart {
    Q_OBJECT

public:
    explicit ThumbnailStrip(AppModel& model, QWidget* parent = nullptr);
    QListView* view() const { return view_; }

protected:
    void refresh() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QListView* view_;
    ThumbnailModel* cells_;
    const void* document_ = nullptr;
    int shownPage_ = -1;
};
