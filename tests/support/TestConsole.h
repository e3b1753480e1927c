#pragma once

#include "support/TestSession.h"
#include "ui/MainWindow.h"

#include <QAction>

// The window's command labelled `text`, or null when it has none.
inline QAction* commandWithText(const QWidget& window, const QString& text)
{
    for (QAction* action : window.findChildren<QAction*>())
        if (action->text() == text)
            return action;
    return nullptr;
}

// The main window on a test session, shown.
struct TestConsole : TestSession {
    MainWindow window{model};

    TestConsole() { window.show(); }
    QAction* command(const QString& text) const { return commandWithText(window, text); }
};
