#pragma once

#include "ui/console/ConsolePart.h"

class QLabel;

// A sidebar section's header: a tinted icon and the section's title.
class SidebarHeader : public ConsolePart {
    Q_OBJECT

public:
    SidebarHeader(AppModel& model, const QString& titleKey, const QString& iconName, const QColor& tint,
                  QWidget* parent = nullptr);

protected:
    void refresh() override;

private:
    QString titleKey_;
    QLabel* title_;
};
