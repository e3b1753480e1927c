#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"
#include "ui/MainWindow.h"

#include <QAction>
#include <QFile>
#include <QMenu>
#include <QtTest>

namespace {

QAction* command(const QWidget& window, const QString& text)
{
    for (QAction* action : window.findChildren<QAction*>())
        if (action->text() == text)
            return action;
    return nullptr;
}

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
        FakePlatform platform;
        AppModel model(platform.services());
        MainWindow window(model);
        window.show();

        QAction* save = command(window, QStringLiteral("Save Show"));
        QAction* saveAs = command(window, QStringLiteral("Save Show As…"));
        QAction* close = command(window, QStringLiteral("Close Document"));
        QVERIFY(save && saveAs && close);
        for (const QString& text : {QStringLiteral("Open PDF…"), QStringLiteral("Open Folder…"),
                                    QStringLiteral("Add to Set…"), QStringLiteral("Open Show…"),
                                    QStringLiteral("Cue this slide…"), QStringLiteral("Next Cue"),
                                    QStringLiteral("Previous Cue")}) {
            QAction* action = command(window, text);
            QVERIFY2(action, qPrintable(text));
            QVERIFY2(action->isEnabled(), qPrintable(text));
        }
        QVERIFY(!save->isEnabled());
        QVERIFY(!saveAs->isEnabled());
        QVERIFY(!close->isEnabled());

        TestFolder folder;
        model.replacePlaylist({folder.pdf("a.pdf", 2)});
        QTRY_VERIFY_WITH_TIMEOUT(save->isEnabled(), 10000);
        QVERIFY(saveAs->isEnabled());
        QVERIFY(close->isEnabled());

        close->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(!close->isEnabled(), 10000);
        QVERIFY(model.playlist().empty());
        QVERIFY(!save->isEnabled());
    }

    // The commands reach the panels: a folder opens as a set, the set saves
    // as a show, and the show opens again from its file.
    void commandsOpenAndSaveThroughThePanels()
    {
        FakePlatform platform;
        AppModel model(platform.services());
        MainWindow window(model);
        window.show();
        TestFolder folder;
        QVERIFY(QDir().mkpath(folder.file("deck")));
        folder.pdf("deck/Song 10.pdf", 1);
        folder.pdf("deck/Song 2.pdf", 2);

        platform.dialogs->openReplies.push_back({folder.file("deck")});
        command(window, QStringLiteral("Open Folder…"))->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(setNames(model), (QStringList{"Song 2", "Song 10"}), 10000);
        QVERIFY(platform.dialogs->openRequests.back().directories);

        const QString show = folder.file("gig.brelvonic");
        platform.dialogs->saveReplies.push_back(show);
        QAction* saveAs = command(window, QStringLiteral("Save Show As…"));
        QTRY_VERIFY_WITH_TIMEOUT(saveAs->isEnabled(), 10000);
        saveAs->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(show), 10000);
        QCOMPARE(model.showFileURL(), std::optional<QString>(show));

        model.closeDocument();
        platform.dialogs->openReplies.push_back({show});
        command(window, QStringLiteral("Open Show…"))->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(setNames(model), (QStringList{"Song 2", "Song 10"}), 10000);
        QCOMPARE(model.showFileURL(), std::optional<QString>(show));
        QVERIFY(platform.dialogs->alerts.empty());
    }

    // The Recents submenu lists the recent files by name, opens one, and
    // clears the list; an empty list shows one disabled line.
    void recentMenuListsOpensAndClears()
    {
        FakePlatform platform;
        AppModel model(platform.services());
        MainWindow window(model);
        window.show();
        TestFolder folder;
        const QString a = folder.pdf("a.pdf", 1);
        const QString b = folder.pdf("b.pdf", 2);
        model.replacePlaylist({a});
        model.replacePlaylist({b});

        QMenu* recent = nullptr;
        for (QMenu* menu : window.findChildren<QMenu*>())
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
        QTRY_COMPARE_WITH_TIMEOUT(setNames(model), QStringList{"a"}, 10000);

        texts();
        recent->actions().constLast()->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(model.recentFiles().isEmpty(), 10000);
        QCOMPARE(texts(), QStringList{"No recent files"});
        QVERIFY(!recent->actions().constFirst()->isEnabled());
    }
};

QTEST_MAIN(MainWindowMenuTest)
#include "tst_MainWindowMenu.moc"
