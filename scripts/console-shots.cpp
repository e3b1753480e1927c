// Pictures of the operator console for looking at it as an operator would:
// `console-shots OUTDIR PDF1 PDF2` writes, for each interface language and
// for 1180 × 760 and 980 × 640, the console showing a two-PDF set with a cue,
// a note, a marker stroke, the laser and blackout on, and the empty console.
// Run it on a real display server (Xvfb) for real fonts and styles.
#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "ui/console/ConsoleStyle.h"
#include "ui/console/ConsoleWindow.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QScrollArea>
#include <QScrollBar>

#include <cstdio>

namespace {
void settle()
{
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents();
}
}

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    ConsoleStyle::applyDarkTheme(app);
    if (argc < 4) {
        std::fputs("usage: console-shots OUTDIR PDF1 PDF2\n", stderr);
        return 2;
    }
    const QString out = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(out);
    const QStringList set{QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3])};

    FakePlatform platform;
    platform.scheduler = std::make_shared<FakeScheduler>(double(QDateTime::currentSecsSinceEpoch()));
    platform.screens->list = {PlatformScreen{1, "Built-in Display", QRectF(0, 0, 1440, 900), 2},
                              PlatformScreen{2, "Projector", QRectF(1440, 0, 1920, 1080), 1}};
    platform.screens->mainId = 1;
    AppModel model(platform.services());
    model.recentFiles.set(set);

    struct Language {
        AppLanguage language;
        const char* name;
    };
    const Language languages[] = {{AppLanguage::english, "en"},
                                  {AppLanguage::german, "de"},
                                  {AppLanguage::russian, "ru"},
                                  {AppLanguage::chinese, "zh"}};
    const QSize sizes[] = {{1180, 760}, {980, 640}};
    ConsoleWindow window(model);
    window.show();
    for (const QSize& size : sizes) {
        window.resize(size);
        for (const Language& l : languages) {
            model.interfaceLanguage.set(l.language);
            model.closeDocument();
            model.playlist.set({});
            settle();
            window.grab().save(QStringLiteral("%1/empty-%2-%3x%4.png").arg(out, l.name).arg(size.width()).arg(size.height()));

            model.replacePlaylist(set);
            model.plannedDuration.set(45 * 60);
            platform.scheduler->runAll();  // thumbnails
            model.goToPage(2);
            model.addBookmark(QStringLiteral("Chorus"), 2);
            model.setCurrentNote(QStringLiteral("Lights down, wait for the band"));
            model.setTool(StageTool::marker);
            model.handleCanvasPoint({0.2, 0.7}, false);
            model.handleCanvasPoint({0.45, 0.62}, false);
            model.handleCanvasPoint({0.7, 0.75}, true);
            model.setTool(StageTool::laser);
            model.handleCanvasPoint({0.6, 0.4}, false);
            if (!model.isBlackout())
                model.toggleBlackout();
            platform.scheduler->advance(754);
            settle();
            window.grab().save(QStringLiteral("%1/show-%2-%3x%4.png").arg(out, l.name).arg(size.width()).arg(size.height()));
            // The sidebar's lower sections, scrolled into view.
            auto* sidebar = static_cast<QScrollArea*>(window.sidebar());
            sidebar->verticalScrollBar()->setValue(sidebar->verticalScrollBar()->maximum());
            settle();
            window.grab().save(QStringLiteral("%1/tools-%2-%3x%4.png").arg(out, l.name).arg(size.width()).arg(size.height()));
            sidebar->verticalScrollBar()->setValue(0);
            model.toggleBlackout();
            model.setTool(StageTool::pointer);
            model.clearAnnotations();
        }
    }
    return 0;
}
