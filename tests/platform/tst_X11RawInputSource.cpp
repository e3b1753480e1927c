#include "platform/X11RawInputSource.h"
#include "support/ClickerSession.h"
#include "support/XvfbServer.h"

#include <QtTest>

#include <X11/Xlib.h>
#include <linux/input-event-codes.h>

// The X11 session's raw input on a private X server: keys and buttons sent
// with XTest while another client's window has the focus turn the slides,
// and that client still receives every key.
class X11RawInputSourceTest : public QObject {
    Q_OBJECT

    // Another program: a window of its own connection that holds the focus
    // and records the key codes it receives.
    struct FocusedClient {
        Display* display;
        Window window;
        QList<unsigned> keys;

        explicit FocusedClient(const QString& name)
            : display(XOpenDisplay(name.toLocal8Bit().constData()))
        {
            window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 200, 200, 0, 0, 0);
            XSelectInput(display, window, KeyPressMask | StructureNotifyMask);
            XMapWindow(display, window);
            for (XEvent e;;) {
                XNextEvent(display, &e);
                if (e.type == MapNotify)
                    break;
            }
            XSetInputFocus(display, window, RevertToParent, CurrentTime);
            XSync(display, False);
        }
        ~FocusedClient() { XCloseDisplay(display); }
        const QList<unsigned>& received()
        {
            while (XPending(display)) {
                XEvent e;
                XNextEvent(display, &e);
                if (e.type == KeyPress)
                    keys << e.xkey.keycode;
            }
            return keys;
        }
    };

    struct Global : ClickerSession {
        Global(const QString& display)
            : ClickerSession({.local = {}, .global = [display] { return std::make_unique<X11RawInputSource>(display); },
                              .tap = {}})
        {
            model.replacePlaylist({pdf("ten.pdf", 10)});
            focusElsewhere();
            monitor.start(model);
        }
    };

private slots:
    void keysSentToAnotherClientTurnSlidesOnce()
    {
        XvfbServer x;
        QVERIFY(x.isRunning());
        FocusedClient other(x.display());
        Global s(x.display());
        QVERIFY(s.monitor.hearsOutside());

        QCOMPARE(x.run("xdotool", {"key", "Next"}), 0);
        QTRY_COMPARE(s.model.pageIndex(), 1);
        // Listen-only: the focused client got the key as well.
        QTRY_COMPARE(other.received(), QList<unsigned>{KEY_PAGEDOWN + 8});

        // Once per press: the next key acts, and the page moved only once.
        QCOMPARE(x.run("xdotool", {"key", "b"}), 0);
        QTRY_VERIFY(s.model.isBlackout());
        QCOMPARE(s.model.pageIndex(), 1);

        // Characters follow the layout; Super held stops a key; a held key
        // moves once.
        QCOMPARE(x.run("xdotool", {"key", "super+Right", "period"}), 0);
        QTRY_VERIFY(!s.model.isBlackout());
        QCOMPARE(s.model.pageIndex(), 1);
        QCOMPARE(x.run("xdotool", {"keydown", "Right", "keydown", "Right", "keydown", "Right", "keyup", "Right", "key", "b"}), 0);
        QTRY_VERIFY(s.model.isBlackout());
        QCOMPARE(s.model.pageIndex(), 2);

        // Digits then Enter jump; extra buttons move, the middle one does not.
        QCOMPARE(x.run("xdotool", {"key", "7", "Return"}), 0);
        QTRY_COMPARE(s.model.pageIndex(), 6);
        QCOMPARE(x.run("xdotool", {"click", "8", "click", "2", "click", "9"}), 0);
        QTRY_COMPARE(s.model.pageIndex(), 8);
        QCOMPARE(x.run("xdotool", {"click", "10"}), 0);
        QTRY_COMPARE(s.model.pageIndex(), 7);
        // Every key went to the focused client too.
        for (unsigned code : {KEY_B, KEY_DOT, KEY_7, KEY_ENTER})
            QTRY_VERIFY(other.received().contains(code + 8));
    }

    void standsBackWhileOurWindowHasTheKeyboard()
    {
        XvfbServer x;
        QVERIFY(x.isRunning());
        FocusedClient other(x.display());
        Global s(x.display());
        s.focus = {true, true, false};
        const int before = s.heard;
        QCOMPARE(x.run("xdotool", {"key", "Next"}), 0);
        QTRY_VERIFY(s.heard > before);
        QCOMPARE(s.model.pageIndex(), 0);
    }

    void noServerNoSource()
    {
        X11RawInputSource source(QStringLiteral(":9999"));
        QVERIFY(!source.start([](const EventSnapshot&) { return true; }));
        QVERIFY(!source.hearsOutside());
    }
};

QTEST_MAIN(X11RawInputSourceTest)
#include "tst_X11RawInputSource.moc"
