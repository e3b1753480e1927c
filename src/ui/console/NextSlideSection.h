#pragma once

#include "ui/console/ConsolePart.h"

class PagePreview;
class QLabel;

// The slide that the next press brings, with its number; "End of set" at
// the end.
class NextSlideSection : public ConsolePart {
    Q_OBJECT

public:
    explicit NextSlideSection(AppModel& model, QWidget* parent = nullptr);

protected:
    void refresh() override;

private:
    PagePreview* preview_;
    QLabel* caption_;
    int generation_ = 0;  // a deferred render for an older page is dropped
};
