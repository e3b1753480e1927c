#pragma once

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

// The main window on a model with a folder, shown.
struct ShownMainWindow : ModelWithFolder {
    MainWindow window{model};

    ShownMainWindow() { window.show(); }
    QAction* command(const QString& text) const { return childWithText(window, text); }
};
