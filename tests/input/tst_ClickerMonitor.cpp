#include "support/ClickerSession.h"
#include "support/FakeInputSource.h"

#include <QtTest>

#include <linux/input-event-codes.h>

// What each presenter input does, and which source answers it.
class ClickerMonitorTest : public QObject {
    Q_OBJECT

    // A 10-page PDF with cues on pages 2 and 7, the monitor started on it.
    struct Stage : ClickerSession {
        Stage()
        {
            model.replacePlaylist({pdf("ten.pdf", 10), pdf("three.pdf", 3)});
            model.addBookmark("Intro", 2);
            model.addBookmark("Bridge", 7);
            monitor.start(model);
        }
    };

    struct Row {
        const char* name;
        std::function<void(Stage&)> before;
        std::function<bool(Stage&)> press;
        bool used;
        QString after;
    };

private slots:
    void everyInputActsAsTheKeyTableSays()
    {
        const auto at = [](int page, QString buffer = {}, StageTool tool = StageTool::pointer) {
            return [=](Stage& s) {
                s.model.goToPage(page);
                for (QChar c : buffer)
                    s.model.appendJumpDigit(QString(c));
                if (tool != StageTool::pointer)
                    s.model.setTool(tool);
            };
        };
        const auto keyOf = [](uint16_t code, QString chars = {}, uint64_t flags = 0) {
            return [=](Stage& s) { return s.key(code, chars, flags); };
        };
        const uint64_t shift = ClickerModifier::shift, option = ClickerModifier::option;
        const std::vector<Row> rows = {
            // Moves.
            {"space", at(3), keyOf(KEY_SPACE, " "), true, "p4 [] pointer"},
            {"page down", at(3), keyOf(KEY_PAGEDOWN), true, "p4 [] pointer"},
            {"right", at(3), keyOf(KEY_RIGHT), true, "p4 [] pointer"},
            {"down", at(3), keyOf(KEY_DOWN), true, "p4 [] pointer"},
            {"backspace", at(3), keyOf(KEY_BACKSPACE), true, "p2 [] pointer"},
            {"page up", at(3), keyOf(KEY_PAGEUP), true, "p2 [] pointer"},
            {"left", at(3), keyOf(KEY_LEFT), true, "p2 [] pointer"},
            {"up", at(3), keyOf(KEY_UP), true, "p2 [] pointer"},
            {"home", at(3), keyOf(KEY_HOME), true, "p0 [] pointer"},
            {"end", at(3), keyOf(KEY_END), true, "p9 [] pointer"},
            {"shift and option do not block", at(3), keyOf(KEY_RIGHT, {}, shift | option), true, "p4 [] pointer"},
            // Media keys and extra buttons.
            {"media next", at(3), keyOf(KEY_NEXTSONG), true, "p4 [] pointer"},
            {"fast forward", at(3), keyOf(KEY_FASTFORWARD), true, "p4 [] pointer"},
            {"media previous", at(3), keyOf(KEY_PREVIOUSSONG), true, "p2 [] pointer"},
            {"rewind", at(3), keyOf(KEY_REWIND), true, "p2 [] pointer"},
            {"button 3", at(3), [](Stage& s) { return s.button(3); }, true, "p4 [] pointer"},
            {"button 4", at(3), [](Stage& s) { return s.button(4); }, true, "p4 [] pointer"},
            {"button 5", at(3), [](Stage& s) { return s.button(5); }, true, "p2 [] pointer"},
            {"button 6 unused", at(3), [](Stage& s) { return s.button(6); }, false, "p3 [] pointer"},
            {"middle button unused", at(3), [](Stage& s) { return s.button(2); }, false, "p3 [] pointer"},
            // Jump entry.
            {"main row digit", at(3), keyOf(KEY_7, "7"), true, "p3 [7] pointer"},
            {"keypad digit", at(3, "1"), keyOf(KEY_KP0), true, "p3 [10] pointer"},
            {"digit by code, not layout", at(3), keyOf(KEY_2, QStringLiteral("é")), true, "p3 [2] pointer"},
            {"enter commits", at(3, "6"), keyOf(KEY_ENTER), true, "p5 [] pointer"},
            {"keypad enter commits", at(3, "12"), keyOf(KEY_KPENTER), true, "p9 [] pointer"},
            {"enter with nothing typed", at(3), keyOf(KEY_ENTER), true, "p4 [] pointer"},
            {"forward delete takes a digit back", at(3, "12"), keyOf(KEY_DELETE), true, "p3 [1] pointer"},
            {"clear takes a digit back", at(3, "4"), keyOf(KEY_CLEAR), true, "p3 [] pointer"},
            {"forward delete with none typed", at(3), keyOf(KEY_DELETE), false, "p3 [] pointer"},
            {"clear with none typed reads characters", at(3), keyOf(KEY_CLEAR, "b"), true, "p3 [] pointer black"},
            // Escape, one step at a time.
            {"escape drops typed digits", [&](Stage& s) { at(3, "4", StageTool::marker)(s); }, keyOf(KEY_ESC), true,
             "p3 [] marker"},
            {"escape returns to the pointer", at(3, {}, StageTool::marker), keyOf(KEY_ESC), true, "p3 [] pointer"},
            {"escape blacks out", at(3), keyOf(KEY_ESC), true, "p3 [] pointer black"},
            {"escape brings the picture back",
             [&](Stage& s) { at(3)(s); s.model.toggleBlackout(); }, keyOf(KEY_ESC), true, "p3 [] pointer"},
            // Characters.
            {"b", at(3), keyOf(KEY_B, "b"), true, "p3 [] pointer black"},
            {"capital B", at(3), keyOf(KEY_B, "B", shift), true, "p3 [] pointer black"},
            {"period", at(3), keyOf(KEY_DOT, "."), true, "p3 [] pointer black"},
            {"f", at(3), keyOf(KEY_F, "f"), true, "p3 [] pointer frozen"},
            {"l", at(3), keyOf(KEY_L, "l"), true, "p3 [] laser"},
            {"m", at(3), keyOf(KEY_M, "m"), true, "p3 [] marker"},
            {"m twice is the pointer", at(3, {}, StageTool::marker), keyOf(KEY_M, "m"), true, "p3 [] pointer"},
            {"r", at(3), keyOf(KEY_R, "r"), true, "p3 [] frame"},
            {"z", at(3), keyOf(KEY_Z, "z"), true, "p3 [] zoom"},
            {"letters by layout, not code", at(3), keyOf(KEY_SEMICOLON, "m"), true, "p3 [] marker"},
            {"unknown letter", at(3), keyOf(KEY_Q, "q"), false, "p3 [] pointer"},
            // Cues on pages 2 and 7.
            {"next cue", at(3), keyOf(KEY_RIGHTBRACE, "]"), true, "p7 [] pointer"},
            {"next cue wraps from the last", at(7), keyOf(KEY_RIGHTBRACE, "]"), true, "p2 [] pointer"},
            {"previous cue", at(8), keyOf(KEY_LEFTBRACE, "["), true, "p7 [] pointer"},
            {"previous cue wraps from the first", at(2), keyOf(KEY_LEFTBRACE, "["), true, "p7 [] pointer"},
            {"previous cue from before the first", at(0), keyOf(KEY_LEFTBRACE, "["), true, "p7 [] pointer"},
            // Not for the presenter.
            {"command right", at(3), keyOf(KEY_RIGHT, {}, ClickerModifier::command), false, "p3 [] pointer"},
            {"control b", at(3), keyOf(KEY_B, "b", ClickerModifier::control), false, "p3 [] pointer"},
            {"repeat", at(3), [](Stage& s) { return s.key(KEY_RIGHT, {}, 0, ClickerSource::local, true); }, false,
             "p3 [] pointer"},
            {"repeated media key", at(3), [](Stage& s) { return s.key(KEY_NEXTSONG, {}, 0, ClickerSource::local, true); },
             false, "p3 [] pointer"},
        };
        for (const Row& row : rows) {
            Stage s;
            row.before(s);
            QCOMPARE(s.model.playlistIndex(), 0);
            QCOMPARE(row.press(s), row.used);
            QVERIFY2(s.state() == row.after, qPrintable(QString(row.name) + ": " + s.state()));
        }
    }

    void cueKeysWithoutCuesAreUsedAndStay()
    {
        ClickerSession s;
        s.model.replacePlaylist({s.pdf("a.pdf", 5)});
        s.monitor.start(s.model);
        s.model.goToPage(2);
        QVERIFY(s.key(KEY_RIGHTBRACE, "]"));
        QVERIFY(s.key(KEY_LEFTBRACE, "["));
        QCOMPARE(s.state(), QStringLiteral("p2 [] pointer"));
    }

    void whoAnswers_data()
    {
        QTest::addColumn<int>("focus");  // 0 another program, 1 our window, 2 our text field, 3 active, no window
        QTest::addColumn<int>("source");
        QTest::addColumn<bool>("used");
        const int local = int(ClickerSource::local), global = int(ClickerSource::global), tap = int(ClickerSource::tap);
        QTest::newRow("our window: local") << 1 << local << true;
        QTest::newRow("our window: global stands back") << 1 << global << false;
        QTest::newRow("our window: tap stands back") << 1 << tap << false;
        QTest::newRow("elsewhere: local has nothing") << 0 << local << false;
        QTest::newRow("elsewhere: global") << 0 << global << true;
        QTest::newRow("elsewhere: tap") << 0 << tap << true;
        QTest::newRow("typing a note: local") << 2 << local << false;
        QTest::newRow("typing a note: tap") << 2 << tap << false;
        QTest::newRow("active without window: tap") << 3 << tap << true;
        QTest::newRow("active without window: local") << 3 << local << false;
    }

    void whoAnswers()
    {
        QFETCH(int, focus);
        QFETCH(int, source);
        QFETCH(bool, used);
        ClickerSession s;
        s.model.replacePlaylist({s.pdf("a.pdf", 5)});
        s.monitor.start(s.model);
        const ClickerMonitor::Focus focuses[] = {{false, false, false}, {true, true, false}, {true, true, true}, {true, false, false}};
        s.focus = focuses[focus];
        QCOMPARE(s.key(KEY_PAGEDOWN, {}, 0, ClickerSource(source)), used);
        QCOMPARE(s.model.pageIndex(), used ? 1 : 0);
        // Digits typed into a text field never start a jump.
        QCOMPARE(s.key(KEY_1, "1", 0, ClickerSource(source)), used);
        QCOMPARE(s.model.jumpBuffer(), used ? QStringLiteral("1") : QString());
    }

    void ignoredDevicesCountOnlyInOurWindows()
    {
        ClickerSession s;
        s.model.replacePlaylist({s.pdf("a.pdf", 5)});
        s.monitor.start(s.model);
        s.model.setClickerDeviceIgnored("046d:c534:Office Keyboard", true);
        EventSnapshot press = ClickerKeyMap::keyDown(KEY_PAGEDOWN, {}, 0, false);
        press.deviceID = "046d:c534:Office Keyboard";
        s.focusElsewhere();
        QVERIFY(!s.monitor.handle(press, ClickerSource::tap));
        QVERIFY(!s.monitor.handle(press, ClickerSource::global));
        press.deviceID = "1915:1001:Presenter Remote";
        QVERIFY(s.monitor.handle(press, ClickerSource::tap));
        QCOMPARE(s.model.pageIndex(), 1);
        // At the console the operator's keyboard always works.
        s.focus = {true, true, false};
        press.deviceID = "046d:c534:Office Keyboard";
        QVERIFY(s.monitor.handle(press, ClickerSource::local));
        QCOMPARE(s.model.pageIndex(), 2);
        // Ticked again, it is heard outside too.
        s.model.setClickerDeviceIgnored("046d:c534:Office Keyboard", false);
        s.focusElsewhere();
        QVERIFY(s.monitor.handle(press, ClickerSource::tap));
        QCOMPARE(s.model.pageIndex(), 3);
    }

    void onePressHeardTwiceActsOnce()
    {
        // The tap reads the remote's node itself; the X server hears the same
        // press through its own device for that node.
        FakeInputSource* tap = nullptr;
        ClickerSession s({.local = {}, .global = {}, .tap = [&] {
                              auto made = std::make_unique<FakeInputSource>();
                              made->nodes = {"/dev/input/event5"};
                              tap = made.get();
                              return made;
                          }});
        s.model.replacePlaylist({s.pdf("a.pdf", 5)});
        s.monitor.start(s.model);
        s.focusElsewhere();
        EventSnapshot press = ClickerKeyMap::keyDown(KEY_PAGEDOWN, {}, 0, false);
        press.deviceNode = "/dev/input/event5";
        QVERIFY(s.monitor.handle(press, ClickerSource::tap));
        QVERIFY(!s.monitor.handle(press, ClickerSource::global));
        QCOMPARE(s.model.pageIndex(), 1);
        // A device the tap cannot read: the X server's answer counts.
        press.deviceNode = "/dev/input/event6";
        QVERIFY(s.monitor.handle(press, ClickerSource::global));
        press.deviceNode.clear();
        QVERIFY(s.monitor.handle(press, ClickerSource::global));
        QCOMPARE(s.model.pageIndex(), 3);
        QVERIFY(tap);
    }

    void nothingHappensBeforeStart()
    {
        ClickerSession s;
        s.model.replacePlaylist({s.pdf("a.pdf", 5)});
        QVERIFY(!s.key(KEY_PAGEDOWN));
        QCOMPARE(s.model.pageIndex(), 0);
    }

    void digitsByKeyCode()
    {
        const std::pair<uint16_t, const char*> digits[] = {
            {KEY_0, "0"}, {KEY_1, "1"}, {KEY_5, "5"}, {KEY_9, "9"}, {KEY_KP0, "0"}, {KEY_KP1, "1"},
            {KEY_KP5, "5"}, {KEY_KP9, "9"}, {KEY_KPDOT, nullptr}, {KEY_A, nullptr}, {0, nullptr},
        };
        for (const auto& [code, digit] : digits) {
            const auto got = ClickerMonitor::digit(code);
            QCOMPARE(got.has_value(), digit != nullptr);
            if (digit)
                QCOMPARE(*got, QString::fromLatin1(digit));
        }
    }
};

QTEST_MAIN(ClickerMonitorTest)
#include "tst_ClickerMonitor.moc"
