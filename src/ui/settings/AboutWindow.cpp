#include "ui/settings/AboutWindow.h"

AboutWindow::AboutWindow(AppModel&, QWidget* parent)
    : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("about"));
}
