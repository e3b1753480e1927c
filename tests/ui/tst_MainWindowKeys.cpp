#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"
#include "ui/MainWindow.h"

#include <QtTest>

// The window's own keys page through the set the way a presenter remote does.
class MainWindowKeysTest : public QObject {
    Q_OBJECT

    TestFolder folder;
    QString three, twelve;

    static void press(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(&window, key, modifiers);
    }

private slots:
    void initTestCase()
    {
        three = folder.pdf("three.pdf", 3);
        twelve = folder.pdf("twelve.pdf", 12);
    }

    void arrowsPagesAndSpaceMoveThroughTheSet()
    {
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({three, twelve});
        MainWindow window(model);
        for (Qt::Key key : {Qt::Key_Right, Qt::Key_Down, Qt::Key_PageDown})
            press(window, key);
        QCOMPARE(model.playlistIndex(), 1);  // past the last page of the first file
        QCOMPARE(model.pageIndex(), 0);
        press(window, Qt::Key_Space);
        QCOMPARE(model.pageIndex(), 1);
        for (Qt::Key key : {Qt::Key_Left, Qt::Key_Up, Qt::Key_PageUp}) {
            const int before = model.globalPageIndex();
            press(window, key);
            QCOMPARE(model.globalPageIndex(), before - 1);
        }
        // Up crossed back to the last page of the first file.
        QCOMPARE(model.playlistIndex(), 0);
        QCOMPARE(model.pageIndex(), 1);
    }

    void digitsThenEnterJumpWithinTheFile()
    {
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({twelve, three});
        MainWindow window(model);
        press(window, Qt::Key_1);
        press(window, Qt::Key_1);
        QCOMPARE(model.jumpBuffer(), QStringLiteral("11"));
        press(window, Qt::Key_Return);
        QCOMPARE(model.pageIndex(), 10);
        QCOMPARE(model.jumpBuffer(), QString());
        // Keypad digits and Enter do the same.
        press(window, Qt::Key_4, Qt::KeypadModifier);
        press(window, Qt::Key_Enter, Qt::KeypadModifier);
        QCOMPARE(model.pageIndex(), 3);
        // Enter with nothing typed is the next slide.
        press(window, Qt::Key_Return);
        QCOMPARE(model.pageIndex(), 4);
        // Five digits keep only the fifth; Escape drops what was typed.
        for (Qt::Key key : {Qt::Key_1, Qt::Key_2, Qt::Key_3, Qt::Key_4, Qt::Key_5})
            press(window, key);
        QCOMPARE(model.jumpBuffer(), QStringLiteral("5"));
        press(window, Qt::Key_Escape);
        QCOMPARE(model.jumpBuffer(), QString());
        QCOMPARE(model.pageIndex(), 4);
        // Forward delete and keypad Clear take back the last digit.
        press(window, Qt::Key_1);
        press(window, Qt::Key_2);
        press(window, Qt::Key_Delete);
        QCOMPARE(model.jumpBuffer(), QStringLiteral("1"));
        press(window, Qt::Key_Clear);
        QCOMPARE(model.jumpBuffer(), QString());
    }
};

QTEST_MAIN(MainWindowKeysTest)
#include "tst_MainWindowKeys.moc"
