#include "app/AppCommands.h"
#include "l10n/L10n.h"
#include "support/ShownMainWindow.h"

#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QtTest>

class MainWindowLanguageTest : public QObject {
    Q_OBJECT

private slots:
    void switchingTheLanguageRelabelsAtOnce()
    {
        FakePlatform platform;
        AppModel model(platform.services());
        model.start();
        MainWindow window(model);
        new AppCommands(model, window);
        window.show();

        QAction* open = childWithText(window, QStringLiteral("Open PDF…"));
        QVERIFY(open);
        QLabel* slide = childWithText<QLabel>(window, QStringLiteral("No slide"));
        QVERIFY(slide);
        QMenu* files = nullptr;
        for (QAction* item : window.menuBar()->actions())
            if (item->menu() && item->menu()->actions().contains(open))
                files = item->menu();
        QVERIFY(files);
        QCOMPARE(files->title(), QStringLiteral("Files"));

        model.interfaceLanguage.set(AppLanguage::german);
        QTRY_COMPARE_WITH_TIMEOUT(open->text(), QStringLiteral("PDF öffnen…"), 10000);
        QCOMPARE(slide->text(), QStringLiteral("Keine Folie"));
        QCOMPARE(files->title(), QStringLiteral("Dateien"));

        model.interfaceLanguage.set(AppLanguage::russian);
        QTRY_COMPARE_WITH_TIMEOUT(slide->text(), QStringLiteral("Нет слайда"), 10000);
        QCOMPARE(open->text(), QStringLiteral("Открыть PDF…"));
    }
};

QTEST_MAIN(MainWindowLanguageTest)
#include "tst_MainWindowLanguage.moc"
