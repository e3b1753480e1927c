#include "ui/settings/SettingsWindow.h"

#include "l10n/L10n.h"

SettingsWindow::SettingsWindow(AppModel&, QWidget* parent)
    : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("settings"));
}
