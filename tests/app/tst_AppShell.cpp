#include "app/AppCommands.h"
#include "app/AppShell.h"
#include "l10n/L10n.h"
#include "support/ModelFixtures.h"
#include "ui/console/ConsoleWindow.h"
#include "ui/settings/AboutWindow.h"
#include "ui/settings/SettingsWindow.h"

#include <QToolBar>
#include <QtTest>

#include <algorithm>

namespace {

// The shell on a test session, its console shown and active.
struct ShellSession : ModelWithFolder {
    AppShell shell{model};
    int quits = 0;

    ShellSession()
    {
        shell.quit = [this] { ++quits; };
        shell.showConsole();
        QApplication::setActiveWindow(shell.console());
    }
    QAction* command(const char* key) const { return shell.commands()->command(QString::fromLatin1(key)); }
    void press(const QKeySequence& keys) const { QTest::keySequence(shell.console(), keys); }
};

}

class AppShellTest : public QObject {
    Q_OBJECT

private slots:
    // Every shortcut of the menus, with Ctrl in place of the command key, and
    // only these: the slide, blackout, freeze and tool commands have none.
    void shortcutsAreTheMenuTable()
    {
        ShellSession s;
        const std::map<QString, QKeySequence> expected{
            {"open.pdf_ellipsis", QKeySequence(QStringLiteral("Ctrl+O"))},
            {"open.folder_ellipsis", QKeySequence(QStringLiteral("Ctrl+Shift+O"))},
            {"open.show_ellipsis", QKeySequence(QStringLiteral("Ctrl+Alt+O"))},
            {"save.show", QKeySequence(QStringLiteral("Ctrl+S"))},
            {"save.show_as", QKeySequence(QStringLiteral("Ctrl+Shift+S"))},
            {"bookmark.this", QKeySequence(QStringLiteral("Ctrl+B"))},
            {"output.toggle", QKeySequence(QStringLiteral("Ctrl+P"))},
            {"settings", QKeySequence(QStringLiteral("Ctrl+,"))},
            {"menu.quit", QKeySequence(QStringLiteral("Ctrl+Q"))},
        };
        const QStringList keys{"about.app", "open.pdf_ellipsis", "open.folder_ellipsis", "add.to_set_ellipsis",
                               "close.document", "open.show_ellipsis", "save.show", "save.show_as", "slide.next",
                               "slide.prev", "blackout", "freeze", "laser", "marker", "frame", "zoom", "clear.marks",
                               "undo.stroke", "bookmark.this", "cue.next", "cue.prev", "output.toggle", "settings"};
        for (const QString& key : keys) {
            QAction* action = s.shell.commands()->command(key);
            QVERIFY2(action, qPrintable(key));
            const auto it = expected.find(key);
            QCOMPARE(action->shortcut(), it == expected.end() ? QKeySequence() : it->second);
        }
    }

    // Ctrl+P shows and hides the output; the command is always enabled.
    void outputToggleFromTheKeyboard()
    {
        ShellSession s;
        QVERIFY(s.command("output.toggle")->isEnabled());
        QVERIFY(!s.model.isOutputVisible());
        s.press(QKeySequence(QStringLiteral("Ctrl+P")));
        QTRY_VERIFY_WITH_TIMEOUT(s.model.isOutputVisible(), 10000);
        s.command("output.toggle")->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(!s.model.isOutputVisible(), 10000);
    }

    // About and settings are single windows: opening again brings the same
    // one forward; Ctrl+, opens the settings.
    void aboutAndSettingsAreSingleWindows()
    {
        ShellSession s;
        QVERIFY(!s.shell.about() && !s.shell.settings());
        s.command("about.app")->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(s.shell.about() && s.shell.about()->isVisible(), 10000);
        AboutWindow* about = s.shell.about();
        about->close();
        s.command("about.app")->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(about->isVisible(), 10000);
        QCOMPARE(s.shell.about(), about);
        QCOMPARE(about->objectName(), QStringLiteral("about"));

        QApplication::setActiveWindow(s.shell.console());
        s.press(QKeySequence(QStringLiteral("Ctrl+,")));
        QTRY_VERIFY_WITH_TIMEOUT(s.shell.settings() && s.shell.settings()->isVisible(), 10000);
        SettingsWindow* settings = s.shell.settings();
        s.shell.showSettings();
        QCOMPARE(s.shell.settings(), settings);
        // The console's toolbar opens that same window, not one of its own.
        QToolBar* toolbar = s.shell.console()->findChild<QToolBar*>();
        QVERIFY(toolbar);
        QAction* fromToolbar = nullptr;
        for (QAction* action : toolbar->actions())
            if (action->text() == L10n::t(QStringLiteral("settings")))
                fromToolbar = action;
        QVERIFY(fromToolbar);
        fromToolbar->trigger();
        QCOMPARE(s.shell.settings(), settings);
        const QWidgetList windows = QApplication::topLevelWidgets();
        QCOMPARE(std::count_if(windows.begin(), windows.end(), [](QWidget* w) { return qobject_cast<SettingsWindow*>(w); }),
                 1);
        QCOMPARE(s.quits, 0);
    }

    // Closing the console ends the program, also while other windows are open;
    // closing the About window does not.
    void closingTheConsoleQuits()
    {
        ShellSession s;
        s.shell.showAbout();
        s.shell.about()->close();
        QCoreApplication::processEvents();
        QCOMPARE(s.quits, 0);
        s.shell.showAbout();
        s.shell.console()->close();
        QTRY_COMPARE_WITH_TIMEOUT(s.quits, 1, 10000);
    }

    // Files from the file manager go the way of a drop: a loaded set grows.
    void handedOverFilesGoThroughTheDropPath()
    {
        ShellSession s;
        s.model.replacePlaylist({s.pdf("a.pdf", 2)});
        s.shell.openFiles({s.pdf("b.pdf", 3)});
        QCOMPARE(s.names(), (QStringList{"a.pdf", "b.pdf"}));
        QVERIFY(s.platform.dialogs->openRequests.empty());
    }

    // Becoming active or inactive re-arms the clicker through the hook.
    void activationReachesTheHook()
    {
        ShellSession s;
        QSignalSpy activated(&s.shell, &AppShell::activated);
        emit qApp->applicationStateChanged(Qt::ApplicationInactive);
        emit qApp->applicationStateChanged(Qt::ApplicationActive);
        QCOMPARE(activated.size(), 2);
    }
};

QTEST_MAIN(AppShellTest)
#include "tst_AppShell.moc"
