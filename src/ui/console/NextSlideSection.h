#pragma once

#include "platform/PdfEngine.h"
#include "ui/console/ConsolePart.h"

class PagePreview;
class QLabel;

// The slide that the next press brings, with its number; "End of set" at
// the end.
class NextSlideSection : public ConsolePart {
    Q_OBJECT

public:
    explicit NextSlideSection(AppModel& model, QWidget* parent = nullptr);
    ~NextSlideSection() override;

protected:
    void refresh() override;

private:
    PagePreview* preview_;
    QLabel* caption_;
    int generation_ = 0;  // an answer for an older page is dropped
    RenderTicketPtr pending_;
};
