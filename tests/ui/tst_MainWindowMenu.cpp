#include "support/ShownMainWindow.h"

#include <QFile>
#include <QMenu>
#include <QtTest>

namespace {

// The set's entries by title.
QStringList setNames(const AppModel& model)
{
    QStringList names;
    for (const auto& entry : model.playlist())
        names << entry.title;
    return names;
}

}

class MainWindowMenuTest : public QObject {
    Q_OBJECT

private slots:
    // Without a set only what can act is enabled; loading and closing a set
    // switches the save and close commands as the model changes.
    void commandsFollowTheSet()
    {
        ShownMainWindow c;
        QAction* save = c.command(QStringLiteral("Save Show"));
        QAction* saveAs = c.command(QStringLiteral("Save Show As…"));
        QAction* close = c.command(QStringLiteral("Close Document"));
        QVERIFY(save && saveAs && close);
        for (const QString& text : {QStringLiteral("Open PDF…"), QStringLiteral("Open Folder…"),
                                    QStringLiteral("Add to Set…"), QStringLiteral("Open Show…"),
                                    QStringLiteral("Cue this slide…"), QStringLiteral("Next Cue"),
                                    QStringLiteral("Previous Cue")}) {
            QAction* action = c.command(text);
            QVERIFY2(action, qPrintable(text));
            QVERIFY2(action->isEnabled(), qPrintable(text));
        }
        QVERIFY(!save->isEnabled() && !saveAs->isEnabled() && !close->isEnabled());

        c.model.replacePlaylist({c.pdf("a.pdf", 2)});
        QTRY_VERIFY_WITH_TIMEOUT(save->isEnabled(), 10000);
        QVERIFY(saveAs->isEnabled() && close->isEnabled());

        close->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(!close->isEnabled(), 10000);
        QVERIFY(c.model.playlist().empty());
        QVERIFY(!save->isEnabled());
    }

    // The show commands act on the model: tools, blackout, markup and its
    // undo, which is enabled only while there is something to undo.
    void showCommandsDriveTheStage()
    {
        ShownMainWindow c;
        c.model.replacePlaylist({c.pdf("a.pdf", 3)});
        QAction* undo = c.command(QStringLiteral("Undo stroke"));
        QVERIFY(undo);
        QTRY_VERIFY_WITH_TIMEOUT(!undo->isEnabled(), 10000);

        c.command(QStringLiteral("Marker"))->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(c.model.stageTool(), StageTool::marker, 10000);
        c.model.handleCanvasPoint({0.2, 0.2}, false);
        c.model.handleCanvasPoint({0.6, 0.5}, true);
        QTRY_VERIFY_WITH_TIMEOUT(undo->isEnabled(), 10000);
        undo->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(!undo->isEnabled(), 10000);
        QVERIFY(c.model.strokesByPage().empty() || c.model.strokesByPage().begin()->second.empty());

        c.command(QStringLiteral("Blackout"))->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(c.model.isBlackout(), 10000);
        c.command(QStringLiteral("Blackout"))->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(!c.model.isBlackout(), 10000);
        c.command(QStringLiteral("Next Slide"))->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(c.model.pageIndex(), 1, 10000);
    }

    // The commands reach the panels: a folder opens as a set, the set saves
    // as a show, and the show opens again from its file.
    void commandsOpenAndSaveThroughThePanels()
    {
        ShownMainWindow c;
        c.pdf("deck/Song 10.pdf", 1);
        c.pdf("deck/Song 2.pdf", 2);

        c.platform.dialogs->openReplies.push_back({c.file("deck")});
        c.command(QStringLiteral("Open Folder…"))->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(setNames(c.model), (QStringList{"Song 2", "Song 10"}), 10000);
        QVERIFY(c.platform.dialogs->openRequests.back().directories);

        const QString show = c.file("gig.brelvonic");
        c.platform.dialogs->saveReplies.push_back(show);
        QAction* saveAs = c.command(QStringLiteral("Save Show As…"));
        QTRY_VERIFY_WITH_TIMEOUT(saveAs->isEnabled(), 10000);
        saveAs->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(show), 10000);
        QCOMPARE(c.model.showFileURL(), std::optional<QString>(show));

        c.model.closeDocument();
        c.platform.dialogs->openReplies.push_back({show});
        c.command(QStringLiteral("Open Show…"))->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(setNames(c.model), (QStringList{"Song 2", "Song 10"}), 10000);
        QCOMPARE(c.model.showFileURL(), std::optional<QString>(show));
        QVERIFY(c.platform.dialogs->alerts.empty());
    }

    // The Recents submenu lists the recent files by name, opens one, and
    // clears the list; an empty list shows one disabled line.
    void recentMenuListsOpensAndClears()
    {
        ShownMainWindow c;
        c.model.replacePlaylist({c.pdf("a.pdf", 1)});
        c.model.replacePlaylist({c.pdf("b.pdf", 2)});

        QMenu* recent = nullptr;
        for (QMenu* menu : c.window.findChildren<QMenu*>())
            if (menu->title() == QStringLiteral("Recents"))
                recent = menu;
        QVERIFY(recent);
        const auto texts = [recent] {
            emit recent->aboutToShow();
            QStringList list;
            for (QAction* action : recent->actions())
                list << (action->isSeparator() ? QStringLiteral("-") : action->text());
            return list;
        };
        QCOMPARE(texts(), (QStringList{"b.pdf", "a.pdf", "-", "Clear"}));

        recent->actions().at(1)->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(setNames(c.model), QStringList{"a"}, 10000);

        texts();
        recent->actions().constLast()->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(c.model.recentFiles().isEmpty(), 10000);
        QCOMPARE(texts(), QStringList{"No recent files"});
        QVERIFY(!recent->actions().constFirst()->isEnabled());
    }
};

QTEST_MAIN(MainWindowMenuTest)
#include "tst_MainWindowMenu.moc"
