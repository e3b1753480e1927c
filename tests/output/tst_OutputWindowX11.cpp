// Runs on a private X server with two screens (scripts/with-xorg-dummy.sh):
// 1920x1080 main at 0,0 and 1280x1024 to the right of it. Everything is
// checked through the X server: geometry, properties, stacking, the pointer's
// image and the pixels on screen.
#include "app/AppCommands.h"
#include "app/AppShell.h"
#include "model/AppModel.h"
#include "output/OutputCompositor.h"
#include "output/OutputWindow.h"
#include "output/OutputWindowController.h"
#include "platform/QtScheduler.h"
#include "platform/QtScreens.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"
#include "ui/MainWindow.h"

#include <QProcess>
#include <QtTest>

#include <X11/Xlib.h>
#include <X11/extensions/Xfixes.h>

namespace {

constexpr int timeout = 15000;
const QRect projector(1920, 0, 1280, 1024);
const QRect mainScreen(0, 0, 1920, 1080);

QString run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(30000);
    return QString::fromUtf8(process.readAllStandardOutput());
}

QString windowId(const QWidget* window) { return QStringLiteral("0x%1").arg(window->winId(), 0, 16); }

// The window's rectangle on the root window and whether it is mapped, as the
// X server has it.
struct XWindow {
    QRect rect;
    bool mapped = false;
    bool operator==(const XWindow&) const = default;
};

XWindow xwininfo(const QWidget* window)
{
    const QString info = run(QStringLiteral("xwininfo"), {QStringLiteral("-id"), windowId(window)});
    const auto field = [&info](const char* name) {
        const QRegularExpression pattern(QStringLiteral("%1:\\s+(-?\\d+)").arg(QLatin1String(name)));
        return pattern.match(info).captured(1).toInt();
    };
    return {QRect(field("Absolute upper-left X"), field("Absolute upper-left Y"), field("Width"), field("Height")),
            info.contains(QStringLiteral("IsViewable"))};
}

QString xprop(const QWidget* window, const char* property)
{
    return run(QStringLiteral("xprop"), {QStringLiteral("-id"), windowId(window), QString::fromLatin1(property)})
        .trimmed();
}

// What the X server shows in `rect` of the root window.
QImage grabScreen(const QRect& rect)
{
    QProcess import;
    import.start(QStringLiteral("import"), {QStringLiteral("-silent"), QStringLiteral("-window"), QStringLiteral("root"),
                                            QStringLiteral("-crop"),
                                            QStringLiteral("%1x%2+%3+%4").arg(rect.width()).arg(rect.height())
                                                .arg(rect.x()).arg(rect.y()),
                                            QStringLiteral("png:-")});
    import.waitForFinished(30000);
    return QImage::fromData(import.readAllStandardOutput(), "PNG");
}

// The pointer's current image is blank: every pixel fully transparent.
bool pointerIsBlank()
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return false;
    XFixesCursorImage* image = XFixesGetCursorImage(display);
    bool blank = image != nullptr;
    for (int i = 0; image && i < image->width * image->height; ++i)
        if ((image->pixels[i] >> 24) & 0xff)
            blank = false;
    if (image)
        XFree(image);
    XCloseDisplay(display);
    return blank;
}

// A model on this X server's real screens and main-thread scheduler, with the
// output window controller, and the console shown on the main screen.
struct XSession {
    TestFolder folder;
    FakePlatform fakes;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<AppShell> shell;

    explicit XSession(AspectMode aspect = AspectMode::fillDisplay)
    {
        PlatformServices services = fakes.services();
        services.screens = std::make_shared<QtScreens>();
        services.scheduler = std::make_shared<QtScheduler>();
        services.makeOutputWindowController = [] { return std::make_unique<OutputWindowController>(); };
        model = std::make_unique<AppModel>(services);
        fakes.preferences->values[QStringLiteral("aspect")] = aspectModes.rawValue(aspect);
        shell = std::make_unique<AppShell>(*model);
        shell->quit = [] {};
        shell->console()->setGeometry(100, 100, 1000, 700);
        shell->showConsole();
        model->start();
    }
    ~XSession()
    {
        shell.reset();
        model.reset();
    }
    OutputWindow* output() const { return model->outputController()->window(); }
};

}

class OutputWindowX11Test : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
        QCOMPARE(QGuiApplication::screens().size(), 2);
    }

    // With two screens the output shows at once on the one that is not the
    // main one, full screen there, above the console, out of the task bar and
    // the window switcher, never taking the keyboard focus.
    void startShowsTheOutputOnTheSecondScreen()
    {
        XSession s;
        QTRY_VERIFY_WITH_TIMEOUT(s.output() && xwininfo(s.output()) == (XWindow{projector, true}), timeout);
        const QString state = xprop(s.output(), "_NET_WM_STATE");
        for (const char* atom : {"_NET_WM_STATE_FULLSCREEN", "_NET_WM_STATE_ABOVE", "_NET_WM_STATE_SKIP_TASKBAR",
                                 "_NET_WM_STATE_SKIP_PAGER"})
            QVERIFY2(state.contains(QLatin1String(atom)), qPrintable(state));
        QCOMPARE(xprop(s.output(), "WM_WINDOW_ROLE"), QStringLiteral("WM_WINDOW_ROLE(STRING) = \"pdf-brelvonic-output\""));
        QVERIFY(xprop(s.output(), "_NET_WM_NAME").contains(QStringLiteral("Output — PDF Brelvonic")));
        QVERIFY(xprop(s.output(), "WM_HINTS").contains(QStringLiteral("input or input focus: False")));
        QCOMPARE(s.model->outputPixelSize(), QSizeF(1280, 1024));

        // The root's children in stacking order, top-most first.
        const QString tree = run(QStringLiteral("xwininfo"), {QStringLiteral("-root"), QStringLiteral("-children")});
        const qsizetype console = tree.indexOf(windowId(s.shell->console()) + QLatin1Char(' '));
        const qsizetype output = tree.indexOf(windowId(s.output()) + QLatin1Char(' '));
        QVERIFY(console >= 0 && output >= 0);
        QVERIFY2(output < console, qPrintable(tree));
    }

    // Each aspect gives its rectangle on the projector, centred.
    void aspectsGiveTheirRectangles_data()
    {
        QTest::addColumn<AspectMode>("aspect");
        QTest::addColumn<QRect>("rect");
        QTest::newRow("fillDisplay") << AspectMode::fillDisplay << projector;
        QTest::newRow("r16x9") << AspectMode::r16x9 << QRect(1920, 152, 1280, 720);
        QTest::newRow("r16x10") << AspectMode::r16x10 << QRect(1920, 112, 1280, 800);
        QTest::newRow("r4x3") << AspectMode::r4x3 << QRect(1920, 32, 1280, 960);
        QTest::newRow("r3x2") << AspectMode::r3x2 << QRect(1920, 85, 1280, 853);
        QTest::newRow("r3x4") << AspectMode::r3x4 << QRect(2176, 0, 768, 1024);
        QTest::newRow("r1x1") << AspectMode::r1x1 << QRect(2048, 0, 1024, 1024);
        QTest::newRow("r9x16") << AspectMode::r9x16 << QRect(2272, 0, 576, 1024);
        QTest::newRow("custom 800x600") << AspectMode::custom << QRect(2160, 212, 800, 600);
    }
    void aspectsGiveTheirRectangles()
    {
        QFETCH(AspectMode, aspect);
        QFETCH(QRect, rect);
        XSession s;
        QTRY_VERIFY_WITH_TIMEOUT(s.output() && xwininfo(s.output()).mapped, timeout);
        s.model->customWidth.set(800);
        s.model->customHeight.set(600);
        s.model->aspect.set(aspect);
        QTRY_COMPARE_WITH_TIMEOUT(xwininfo(s.output()), (XWindow{rect, true}), timeout);
        QCOMPARE(s.model->outputPixelSize(), QSizeF(s.model->outputFrame(QRectF(projector)).size()));
        QCOMPARE(s.fakes.preferences->values.value(QStringLiteral("aspect")).toString(), aspectModes.rawValue(aspect));
    }

    // Hiding unmaps the window; showing puts it back where it belongs, also
    // after it was moved meanwhile.
    void hideAndShowReapply()
    {
        XSession s(AspectMode::r4x3);
        const XWindow shown{QRect(1920, 32, 1280, 960), true};
        QTRY_COMPARE_WITH_TIMEOUT(s.output() ? xwininfo(s.output()) : XWindow{}, shown, timeout);
        s.shell->commands()->command(QStringLiteral("output.toggle"))->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(!xwininfo(s.output()).mapped, timeout);
        s.output()->move(5, 5);
        s.shell->commands()->command(QStringLiteral("output.toggle"))->trigger();
        QTRY_COMPARE_WITH_TIMEOUT(xwininfo(s.output()), shown, timeout);
    }

    // The pointer is blank over the output while asked, and the arrow comes
    // back at once, the pointer still over it.
    void pointerHiddenOverTheOutput()
    {
        XSession s(AspectMode::r16x9);
        QTRY_VERIFY_WITH_TIMEOUT(s.output() && xwininfo(s.output()).mapped, timeout);
        QCursor::setPos(projector.center());
        QTRY_VERIFY_WITH_TIMEOUT(pointerIsBlank(), timeout);
        s.model->hideOutputCursor.set(false);
        QTRY_VERIFY_WITH_TIMEOUT(!pointerIsBlank(), timeout);
        s.model->hideOutputCursor.set(true);
        QTRY_VERIFY_WITH_TIMEOUT(pointerIsBlank(), timeout);
        QCursor::setPos(mainScreen.center());
    }

    // What the projector shows is the compositor's picture of the frame
    // state, black around it.
    void pixelsOnScreenAreTheCompositorsPicture()
    {
        XSession s(AspectMode::r4x3);
        s.model->transitionStyle.set(TransitionStyle::none);
        s.model->replacePlaylist({s.folder.pdf(QStringLiteral("deck.pdf"), 3)});
        s.model->goToNextSlide();
        QTRY_VERIFY_WITH_TIMEOUT(s.model->incomingSlideImage() && s.model->pageIndex() == 1, timeout);
        const QRect frame(1920, 32, 1280, 960);
        QTRY_COMPARE_WITH_TIMEOUT(s.output() ? xwininfo(s.output()) : XWindow{}, (XWindow{frame, true}), timeout);

        const QImage expected = OutputCompositor::makeImage(s.model->outputFrameState(), frame.size());
        const QList<QPoint> points{{640, 480}, {200, 150}, {1000, 700}, {640, 100}, {100, 860}, {5, 5}};
        const auto matches = [&] {
            const QImage shot = grabScreen(projector);
            for (const QPoint& p : points) {
                const QColor want = expected.pixelColor(p);
                const QColor got = shot.pixelColor(p + QPoint(0, frame.y()));
                if (std::abs(want.red() - got.red()) > 8 || std::abs(want.green() - got.green()) > 8 ||
                    std::abs(want.blue() - got.blue()) > 8)
                    return false;
            }
            // Black above and below the 4:3 picture.
            return shot.pixelColor(640, 10) == QColor(Qt::black) && shot.pixelColor(640, 1015) == QColor(Qt::black);
        };
        QTRY_VERIFY_WITH_TIMEOUT(matches(), timeout);
        // The slide is not all one colour, so the points do tell pictures apart.
        QVERIFY(expected.pixelColor(points[0]) != expected.pixelColor(points[5]) ||
                expected.pixelColor(points[1]) != expected.pixelColor(points[2]));
    }

    // Switching the projector off moves the output to the main screen;
    // switching it on again brings the output back, since it was selected.
    void unplugAndReplugTheProjector()
    {
        XSession s;
        QTRY_VERIFY_WITH_TIMEOUT(s.output() && xwininfo(s.output()) == (XWindow{projector, true}), timeout);
        run(QStringLiteral("xrandr"), {QStringLiteral("--output"), QStringLiteral("DUMMY1"), QStringLiteral("--off")});
        QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::screens().size(), 1, timeout);
        QTRY_COMPARE_WITH_TIMEOUT(xwininfo(s.output()), (XWindow{mainScreen, true}), timeout);
        QCOMPARE(s.model->outputPixelSize(), QSizeF(1920, 1080));

        run(QStringLiteral("xrandr"), {QStringLiteral("--output"), QStringLiteral("DUMMY1"), QStringLiteral("--mode"),
                                       QStringLiteral("1280x1024"), QStringLiteral("--right-of"),
                                       QStringLiteral("DUMMY0")});
        QTRY_COMPARE_WITH_TIMEOUT(QGuiApplication::screens().size(), 2, timeout);
        QTRY_COMPARE_WITH_TIMEOUT(xwininfo(s.output()), (XWindow{projector, true}), timeout);
    }
};

QTEST_MAIN(OutputWindowX11Test)
#include "tst_OutputWindowX11.moc"
