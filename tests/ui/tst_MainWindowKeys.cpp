#include "support/ShownMainWindow.h"

#include <QtTest>

// The window's own keys page through the set the way a presenter remote does.
class MainWindowKeysTest : public QObject {
    Q_OBJECT

    // Presses the keys one after another.
    static void press(QWidget& window, std::initializer_list<Qt::Key> keys, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        for (Qt::Key key : keys)
            QTest::keyClick(&window, key, modifiers);
    }

private slots:
    void arrowsPagesAndSpaceMoveThroughTheSet()
    {
        ShownMainWindow s;
        s.model.replacePlaylist({s.pdf("three.pdf", 3), s.pdf("twelve.pdf", 12)});
        press(s.window, {Qt::Key_Right, Qt::Key_Down, Qt::Key_PageDown});
        QCOMPARE(s.model.playlistIndex(), 1);  // past the last page of the first file
        QCOMPARE(s.model.pageIndex(), 0);
        press(s.window, {Qt::Key_Space});
        QCOMPARE(s.model.pageIndex(), 1);
        for (Qt::Key key : {Qt::Key_Left, Qt::Key_Up, Qt::Key_PageUp}) {
            const int before = s.model.globalPageIndex();
            press(s.window, {key});
            QCOMPARE(s.model.globalPageIndex(), before - 1);
        }
        // Up crossed back to the last page of the first file.
        QCOMPARE(s.model.playlistIndex(), 0);
        QCOMPARE(s.model.pageIndex(), 1);
    }

    void digitsThenEnterJumpWithinTheFile()
    {
        ShownMainWindow s;
        s.model.replacePlaylist({s.pdf("twelve.pdf", 12), s.pdf("three.pdf", 3)});
        press(s.window, {Qt::Key_1, Qt::Key_1});
        QCOMPARE(s.model.jumpBuffer(), QStringLiteral("11"));
        press(s.window, {Qt::Key_Return});
        QCOMPARE(s.model.pageIndex(), 10);
        QCOMPARE(s.model.jumpBuffer(), QString());
        // Keypad digits and Enter do the same.
        press(s.window, {Qt::Key_4, Qt::Key_Enter}, Qt::KeypadModifier);
        QCOMPARE(s.model.pageIndex(), 3);
        // Enter with nothing typed is the next slide.
        press(s.window, {Qt::Key_Return});
        QCOMPARE(s.model.pageIndex(), 4);
        // Five digits keep only the fifth; Escape drops what was typed.
        press(s.window, {Qt::Key_1, Qt::Key_2, Qt::Key_3, Qt::Key_4, Qt::Key_5});
        QCOMPARE(s.model.jumpBuffer(), QStringLiteral("5"));
        press(s.window, {Qt::Key_Escape});
        QCOMPARE(s.model.jumpBuffer(), QString());
        QCOMPARE(s.model.pageIndex(), 4);
        // Forward delete and keypad Clear take back the last digit.
        press(s.window, {Qt::Key_1, Qt::Key_2, Qt::Key_Delete});
        QCOMPARE(s.model.jumpBuffer(), QStringLiteral("1"));
        press(s.window, {Qt::Key_Clear});
        QCOMPARE(s.model.jumpBuffer(), QString());
    }
};

QTEST_MAIN(MainWindowKeysTest)
#include "tst_MainWindowKeys.moc"
