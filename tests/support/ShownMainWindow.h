#pragma once

#include "app/AppCommands.h"
#include "support/ModelFixtures.h"
#include "ui/MainWindow.h"

#include <QAction>

// The window's command (or, given the type, label) showing `text`, or null.
template <typename Child = QAction>
Child* childWithText(const QWidget& window, const QString& text)
{
    for (Child* child : window.findChildren<Child*>())
        if (child->text() == text)
            return child;
    return nullptr;
}

// The main window on a model with a folder, with the menu commands, shown.
struct ShownMainWindow : ModelWithFolder {
    MainWindow window{model};
    AppCommands* commands = new AppCommands(model, window);  // owned by the window

    ShownMainWindow() { window.show(); }
    QAction* command(const QString& text) const { return childWithText(window, text); }
};
