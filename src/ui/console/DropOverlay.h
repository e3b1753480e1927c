#pragma once

#include "ui/console/ConsolePart.h"

// "Drop PDFs into the set" on a tinted, outlined panel over the whole
// window while a usable drag hovers. It takes no clicks.
class DropOverlay : public ConsolePart {
    Q_OBJECT

public:
    explicit DropOverlay(AppModel& model, QWidget* parent = nullptr);
    QString text() const { return text_; }

protected:
    void refresh() override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString text_;
};
