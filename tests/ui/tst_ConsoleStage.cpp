#include "l10n/L10n.h"
#include "l10n/StringTables.h"
#include "stage/StageCanvas.h"
#include "support/ConsoleProbe.h"
#include "ui/console/ConsoleStyle.h"
#include "ui/console/StageView.h"
#include "ui/console/ThumbnailModel.h"
#include "ui/console/ThumbnailStrip.h"

#include <QComboBox>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>
#include <QToolButton>
#include <QTreeWidget>

namespace {
QString t(const char* key) { return L10n::t(QString::fromLatin1(key)); }

// The texts of the chips over the stage, left to right.
QStringList chips(const ConsoleProbe& c)
{
    QStringList out;
    auto* row = c.find<QWidget>("statusChips");
    if (!row->isVisible())
        return out;
    for (QLabel* chip : row->findChildren<QLabel*>(Qt::FindDirectChildrenOnly))
        out << chip->text();
    return out;
}

// Every text the console shows or holds ready, hidden parts included.
QStringList allTexts(const QWidget& window)
{
    QStringList out{window.windowTitle()};
    for (auto* w : window.findChildren<QLabel*>())
        out << w->text();
    for (auto* w : window.findChildren<QAbstractButton*>())
        out << w->text() << w->toolTip();
    for (auto* w : window.findChildren<QAction*>())
        out << w->text() << w->toolTip();
    for (auto* w : window.findChildren<QLineEdit*>())
        out << w->placeholderText();
    for (auto* w : window.findChildren<QComboBox*>())
        for (int i = 0; i < w->count(); ++i)
            out << w->itemText(i);
    for (auto* w : window.findChildren<QListWidget*>())
        for (int i = 0; i < w->count(); ++i)
            out << w->item(i)->text();
    out.removeAll(QString());
    return out;
}
}

// The detail area and the window: stage overlays, note, timer, thumbnails,
// title, language.
class ConsoleStageTest : public QObject {
    Q_OBJECT

private slots:
    void pageLabelsForOneAndTwoEntries()
    {
        ConsoleProbe c;
        QCOMPARE(c.window.windowTitle(), QStringLiteral("PDF Brelvonic"));
        QVERIFY(c.find<QWidget>("emptyStage")->isVisible());
        c.openSet({12});
        c.model.goToPage(2);
        c.settle();
        QVERIFY(c.find<QWidget>("stage")->isVisible());
        QCOMPARE(c.label("pageBadge"), QStringLiteral("Slide 3 of 12"));
        QCOMPARE(c.window.windowTitle(), c.model.showTitle() + QStringLiteral(" \u2014 deck1 \u00B7 Slide 3 of 12"));

        ConsoleProbe two;
        two.openSet({10, 12});
        two.model.goToNextSlide();
        for (int i = 0; i < 9; ++i)
            two.model.goToNextSlide();  // onto the second file's first page
        two.model.goToPage(2);
        two.settle();
        QCOMPARE(two.label("pageBadge"), QStringLiteral("Slide 3 of 12 \u00B7 set 13/22"));
        QVERIFY(two.window.windowTitle().endsWith(QStringLiteral(" \u2014 deck2 \u00B7 Slide 3 of 12 \u00B7 set 13/22")));
        two.model.closeDocument();
        two.settle();
        QCOMPARE(two.window.windowTitle(), QStringLiteral("PDF Brelvonic"));
    }

    void chipsShowToolsBlackoutAndFreeze()
    {
        ConsoleProbe c;
        c.openSet({3});
        QVERIFY(chips(c).isEmpty());
        auto* marker = c.find<QToolButton>("tool.marker");
        marker->click();
        c.settle();
        QCOMPARE(chips(c), QStringList{t("marker")});
        marker->click();  // the active tool again: back to the pointer
        c.settle();
        QVERIFY(chips(c).isEmpty());
        c.model.toggleBlackout();
        c.settle();
        QCOMPARE(chips(c), QStringList{t("blackout")});
        c.model.toggleFreeze();
        c.find<QToolButton>("tool.laser")->click();
        c.settle();
        QCOMPARE(chips(c), (QStringList{t("blackout"), t("frozen"), t("laser")}));
    }

    void jumpOverlayShowsTypedDigitsUntilDone()
    {
        ConsoleProbe c;
        c.openSet({20});
        auto* jump = c.find<QLabel>("jumpOverlay");
        QVERIFY(!jump->isVisible());
        QCOMPARE(jump->font().pointSize(), 72);
        c.model.appendJumpDigit(QStringLiteral("1"));
        c.model.appendJumpDigit(QStringLiteral("2"));
        c.settle();
        QVERIFY(jump->isVisible());
        QCOMPARE(jump->text(), QStringLiteral("12"));
        // Centred on the stage, above it.
        QVERIFY((jump->geometry().center() - c.find<QWidget>("stageWell")->geometry().center()).manhattanLength() <= 2);
        c.model.commitJump();  // Enter
        c.settle();
        QVERIFY(!jump->isVisible());
        QCOMPARE(c.model.pageIndex(), 11);
        c.model.appendJumpDigit(QStringLiteral("4"));
        c.settle();
        QVERIFY(jump->isVisible());
        c.model.clearJumpBuffer();  // Escape
        c.settle();
        QVERIFY(!jump->isVisible());
    }

    void stageRepaintsOnlyWhenItsPictureChanges()
    {
        ConsoleProbe c;
        c.openSet({3});
        StageCanvas* canvas = c.window.stage()->canvas();
        const int before = canvas->repaintRequests();
        // The output's fade and blackout, and an equal assignment: nothing.
        c.model.transitionProgress.set(0.4);
        c.model.toggleBlackout();
        c.model.previewSlideImage.set(c.model.previewSlideImage.peek());
        c.settle();
        QCOMPARE(canvas->repaintRequests(), before);
        c.model.goToNextSlide();
        c.settle();
        QCOMPARE(canvas->repaintRequests(), before + 1);
    }

    void noteEditsTheCurrentSlidesNote()
    {
        ConsoleProbe c;
        c.openSet({3});
        auto* field = c.find<QLineEdit>("noteField");
        QCOMPARE(field->placeholderText(), t("note.placeholder"));
        QVERIFY(!field->acceptDrops());  // a file dropped here goes to the set
        QTest::keyClicks(field, QStringLiteral("Lights down"));
        QCOMPARE(c.model.currentNote(), QStringLiteral("Lights down"));
        c.model.goToNextSlide();
        c.settle();
        QCOMPARE(field->text(), QString());
        c.model.goToPreviousSlide();
        c.settle();
        QCOMPARE(field->text(), QStringLiteral("Lights down"));
    }

    void timerShowsElapsedAndWarnsInTheLastMinute()
    {
        ConsoleProbe c;
        c.model.plannedDuration.set(90);
        c.openSet({2});  // loading the set starts the timer
        c.platform.scheduler->advance(40);
        auto* elapsed = c.find<QLabel>("elapsed");
        auto* left = c.find<QLabel>("timeLeft");
        QTRY_COMPARE(elapsed->text(), QStringLiteral("0:40"));
        QCOMPARE(left->text(), L10n::t(QStringLiteral("timer.left"), QStringLiteral("0:50")));
        QCOMPARE(left->palette().color(QPalette::WindowText), ConsoleStyle::orange());
        auto* pause = c.find<QToolButton>("timerPause");
        QCOMPARE(pause->toolTip(), t("timer.pause"));
        pause->click();
        QVERIFY(!c.model.isTimerRunning());
        c.settle();
        QCOMPARE(pause->toolTip(), t("timer.resume"));
        c.find<QPushButton>("timerReset")->click();
        QTRY_COMPARE(elapsed->text(), QStringLiteral("0:00"));
        QVERIFY(left->palette().color(QPalette::WindowText) != ConsoleStyle::orange());
        c.model.plannedDuration.set(0);
        c.settle();
        QVERIFY(!left->isVisible());
    }

    void thumbnailsGoCueAndFollowThePage()
    {
        ConsoleProbe c;
        c.openSet({40});
        QVERIFY(thumbnailsDone(c.model, *c.platform.scheduler));  // rendered on the workers
        c.settle();
        ThumbnailStrip* strip = c.window.thumbnails();
        QListView* view = strip->view();
        auto* cells = qobject_cast<ThumbnailModel*>(view->model());
        QCOMPARE(cells->rowCount(), 40);
        QVERIFY(!cells->data(cells->index(3), ThumbnailModel::ImageRole).value<QImage>().isNull());
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(cells->index(2)).center());
        QCOMPARE(c.model.pageIndex(), 2);
        c.settle();
        QVERIFY(cells->data(cells->index(2), ThumbnailModel::CurrentRole).toBool());

        // The context menu cues that slide after going there.
        c.platform.dialogs->promptReplies.push_back(QStringLiteral("Bridge"));
        const QPoint fourth = view->visualRect(cells->index(3)).center();
        QVERIFY(ConsoleProbe::pickFromMenu(
            [&] {
                QContextMenuEvent event(QContextMenuEvent::Mouse, fourth, view->viewport()->mapToGlobal(fourth));
                QApplication::sendEvent(view->viewport(), &event);
            },
            L10n::t(QStringLiteral("bookmark.on_slide_ellipsis"), 4)));
        QCOMPARE(c.model.pageIndex(), 3);
        QCOMPARE(c.model.currentCues().size(), std::size_t(1));
        QCOMPARE(c.model.currentCues()[0].pageIndex, 3);
        c.settle();
        QCOMPARE(cells->data(cells->index(3), ThumbnailModel::CueRole).toString(), QStringLiteral("Bridge"));

        // Any page change brings the current cell into view; the frozen page is marked.
        c.model.toggleFreeze();
        c.model.goToPage(35);
        c.settle();
        QVERIFY(view->viewport()->rect().contains(view->visualRect(cells->index(35)).center()));
        QVERIFY(!view->viewport()->rect().contains(view->visualRect(cells->index(2)).center()));
        QVERIFY(cells->data(cells->index(3), ThumbnailModel::FrozenRole).toBool());
        QVERIFY(!cells->data(cells->index(35), ThumbnailModel::FrozenRole).toBool());
    }

    void emptyStageOpensAndListsRecents()
    {
        ConsoleProbe c;
        const QString recent = c.pdf("recent.pdf", 2);
        c.model.recentFiles.set({recent});
        c.settle();
        auto* list = c.find<QListWidget>("recentFiles");
        QVERIFY(list->isVisible());
        QCOMPARE(list->item(0)->text(), QStringLiteral("recent.pdf"));
        c.find<QPushButton>("emptyOpenPdf")->click();
        QCOMPARE(c.platform.dialogs->openRequests.size(), std::size_t(1));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(0)).center());
        c.settle();
        QCOMPARE(c.paths(), QStringList{recent});
        QVERIFY(!c.find<QWidget>("emptyStage")->isVisible());
    }

    // A switch relabels every part at once: walking the whole widget tree,
    // no text is left that only the old language has.
    void aLanguageSwitchRelabelsEverySection()
    {
        ConsoleProbe c;
        c.openSet({4, 2});
        c.model.addBookmark(QStringLiteral("Intro"), 0);
        c.model.setAspect(AspectMode::custom);
        c.model.setTool(StageTool::marker);
        c.model.plannedDuration.set(600);
        c.settle();
        const QStringList english = allTexts(c.window);
        for (AppLanguage language : {AppLanguage::german, AppLanguage::russian, AppLanguage::chinese}) {
            c.model.interfaceLanguage.set(language);
            c.settle();
            const QStringList shown = allTexts(c.window);
            QVERIFY(shown.size() >= english.size() - 2);
            for (const l10n::StringPair& row : l10n::englishStrings) {
                const QString key = QString::fromLatin1(row.key);
                const QString old = QString::fromUtf8(row.text);
                if (L10n::t(key) == old)
                    continue;  // the same in both languages
                QString pattern = QRegularExpression::escape(old);
                pattern.replace(QStringLiteral("%d"), QStringLiteral(".*")).replace(QStringLiteral("%@"), QStringLiteral(".*"));
                const QRegularExpression oldText(QRegularExpression::anchoredPattern(pattern),
                                                 QRegularExpression::DotMatchesEverythingOption);
                for (const QString& text : shown)
                    QVERIFY2(!oldText.match(text).hasMatch(),
                             qPrintable(QStringLiteral("%1 still shows \"%2\"").arg(appLanguages.rawValue(language), text)));
            }
        }
    }
};

QTEST_MAIN(ConsoleStageTest)
#include "tst_ConsoleStage.moc"
