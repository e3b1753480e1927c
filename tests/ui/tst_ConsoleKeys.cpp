#include "input/ClickerMonitor.h"
#include "platform/QtKeySource.h"
#include "support/ShownMainWindow.h"

#include <QLineEdit>
#include <QVBoxLayout>
#include <QtTest>

// Keys pressed in the window page through the set the way a presenter remote
// does: the clicker monitor's in-program source hears them, real Qt events.
class ConsoleKeysTest : public QObject {
    Q_OBJECT

    // Records the keys and buttons that reach it.
    struct Probe : QWidget {
        QStringList heard;
        Probe() { setFocusPolicy(Qt::StrongFocus); }
        void keyPressEvent(QKeyEvent* e) override
        {
            if (e->key() != Qt::Key_Control && e->key() != Qt::Key_Shift)
                heard << QKeySequence(e->keyCombination()).toString();
        }
        void mousePressEvent(QMouseEvent* e) override { heard << QStringLiteral("button %1").arg(int(e->button())); }
    };

    // The window with its in-program source listening, active, a probe
    // widget and a text field in it, the probe holding the keyboard.
    struct Console : ShownMainWindow {
        ClickerMonitor monitor{{.local = [] { return std::make_unique<QtKeySource>(); }, .global = {}, .tap = {}}};
        Probe* probe = new Probe;
        QLineEdit* field = new QLineEdit;

        Console()
        {
            auto* box = new QWidget;
            auto* layout = new QVBoxLayout(box);
            layout->addWidget(probe);
            layout->addWidget(field);
            window.setCentralWidget(box);
            monitor.start(model);
            window.activateWindow();
            probe->setFocus();
        }
    };

    static void press(QWidget* target, std::initializer_list<Qt::Key> keys, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        for (Qt::Key key : keys)
            QTest::keyClick(target, key, modifiers);
    }

private slots:
    void arrowsPagesAndSpaceMoveThroughTheSet()
    {
        Console s;
        QVERIFY(QTest::qWaitForWindowActive(&s.window));
        s.model.replacePlaylist({s.pdf("three.pdf", 3), s.pdf("twelve.pdf", 12)});
        press(s.probe, {Qt::Key_Right, Qt::Key_Down, Qt::Key_PageDown});
        QCOMPARE(s.model.playlistIndex(), 1);  // past the last page of the first file
        QCOMPARE(s.model.pageIndex(), 0);
        press(s.probe, {Qt::Key_Space});
        QCOMPARE(s.model.pageIndex(), 1);
        for (Qt::Key key : {Qt::Key_Left, Qt::Key_Up, Qt::Key_PageUp}) {
            const int before = s.model.globalPageIndex();
            press(s.probe, {key});
            QCOMPARE(s.model.globalPageIndex(), before - 1);
        }
        QCOMPARE(s.model.playlistIndex(), 0);
        QCOMPARE(s.model.pageIndex(), 1);
        // Every used key was swallowed: the focused widget heard none of them.
        QCOMPARE(s.probe->heard, QStringList());
        // A held key moves once, not once per repeat.
        QTest::sendKeyEvent(QTest::KeyAction::Press, s.probe, Qt::Key_Right, QString(), Qt::NoModifier);
        for (int i = 0; i < 3; ++i) {
            QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier, QString(), true);
            QApplication::sendEvent(s.probe, &repeat);
        }
        QCOMPARE(s.model.pageIndex(), 2);
    }

    void digitsThenEnterJumpWithinTheFile()
    {
        Console s;
        QVERIFY(QTest::qWaitForWindowActive(&s.window));
        s.model.replacePlaylist({s.pdf("twelve.pdf", 12), s.pdf("three.pdf", 3)});
        press(s.probe, {Qt::Key_1, Qt::Key_1});
        QCOMPARE(s.model.jumpBuffer(), QStringLiteral("11"));
        press(s.probe, {Qt::Key_Return});
        QCOMPARE(s.model.pageIndex(), 10);
        QCOMPARE(s.model.jumpBuffer(), QString());
        press(s.probe, {Qt::Key_4, Qt::Key_Enter}, Qt::KeypadModifier);
        QCOMPARE(s.model.pageIndex(), 3);
        press(s.probe, {Qt::Key_Return});
        QCOMPARE(s.model.pageIndex(), 4);
        press(s.probe, {Qt::Key_1, Qt::Key_2, Qt::Key_Delete});
        QCOMPARE(s.model.jumpBuffer(), QStringLiteral("1"));
        press(s.probe, {Qt::Key_Clear});
        QCOMPARE(s.model.jumpBuffer(), QString());
        // Escape: blackout, then back; M, Escape: the pointer again.
        press(s.probe, {Qt::Key_Escape});
        QVERIFY(s.model.isBlackout());
        press(s.probe, {Qt::Key_Escape, Qt::Key_M});
        QVERIFY(!s.model.isBlackout());
        QCOMPARE(s.model.stageTool(), StageTool::marker);
        press(s.probe, {Qt::Key_Escape});
        QCOMPARE(s.model.stageTool(), StageTool::pointer);
        QCOMPARE(s.probe->heard, QStringList());
    }

    void keysNotForThePresenterReachTheWidgets()
    {
        Console s;
        QVERIFY(QTest::qWaitForWindowActive(&s.window));
        s.model.replacePlaylist({s.pdf("five.pdf", 5)});
        press(s.probe, {Qt::Key_Q});
        press(s.probe, {Qt::Key_Right}, Qt::ControlModifier);
        QCOMPARE(s.model.pageIndex(), 0);
        QCOMPARE(s.probe->heard, (QStringList{"Q", "Ctrl+Right"}));

        // Typing in a text field: digits and Enter stay in the field.
        s.field->setFocus();
        QTRY_VERIFY(s.field->hasFocus());
        QTest::keyClicks(s.field, "12 b");
        press(s.field, {Qt::Key_Return});
        QCOMPARE(s.field->text(), QStringLiteral("12 b"));
        QCOMPARE(s.model.jumpBuffer(), QString());
        QCOMPARE(s.model.pageIndex(), 0);
        QVERIFY(!s.model.isBlackout());
    }

    void extraMouseButtons()
    {
        Console s;
        QVERIFY(QTest::qWaitForWindowActive(&s.window));
        s.model.replacePlaylist({s.pdf("five.pdf", 5)});
        QTest::mouseClick(s.probe, Qt::BackButton);
        QTest::mouseClick(s.probe, Qt::ForwardButton);
        QCOMPARE(s.model.pageIndex(), 2);
        QTest::mouseClick(s.probe, Qt::ExtraButton3);
        QCOMPARE(s.model.pageIndex(), 1);
        // The middle and main buttons are the widgets'.
        QTest::mouseClick(s.probe, Qt::MiddleButton);
        QTest::mouseClick(s.probe, Qt::LeftButton);
        QCOMPARE(s.model.pageIndex(), 1);
        QCOMPARE(s.probe->heard, (QStringList{QStringLiteral("button %1").arg(int(Qt::MiddleButton)),
                                               QStringLiteral("button %1").arg(int(Qt::LeftButton))}));
    }
};

QTEST_MAIN(ConsoleKeysTest)
#include "tst_ConsoleKeys.moc"
