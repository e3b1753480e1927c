#include "l10n/L10n.h"
#include "support/ConsoleProbe.h"
#include "ui/console/ColorSwatch.h"
#include "ui/console/CuesSection.h"
#include "ui/console/PagePreview.h"
#include "ui/console/SetListView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>
#include <QTreeWidget>

namespace {
QString t(const char* key) { return L10n::t(QString::fromLatin1(key)); }

// Drags `mime` over `target` at `pos` and drops it there, delivered through
// the window as a real drag is.
void dragAndDrop(QWidget* target, QPoint pos, QMimeData* mime)
{
    QWindow* window = target->window()->windowHandle();
    const QPointF at = target->mapTo(target->window(), pos);
    QDragEnterEvent enter(at.toPoint(), Qt::MoveAction, mime, Qt::LeftButton, {});
    QApplication::sendEvent(window, &enter);
    QDragMoveEvent move(at.toPoint(), Qt::MoveAction, mime, Qt::LeftButton, {});
    QApplication::sendEvent(window, &move);
    QDropEvent drop(at, Qt::MoveAction, mime, Qt::LeftButton, {});
    QApplication::sendEvent(window, &drop);
}

void contextMenuAt(QWidget* viewport, QPoint pos)
{
    QContextMenuEvent event(QContextMenuEvent::Mouse, pos, viewport->mapToGlobal(pos));
    QApplication::sendEvent(viewport, &event);
}
}

// The sidebar's sections, driven through their widgets.
class ConsoleSidebarTest : public QObject {
    Q_OBJECT

private slots:
    void nextSlideShowsTheUpcomingPageOrTheEnd()
    {
        ConsoleProbe c;
        c.openSet({2, 1});
        auto* preview = c.find<PagePreview>("nextPreview");
        QTRY_VERIFY_WITH_TIMEOUT(preview->image(), 20000);
        QCOMPARE(c.label("nextLabel"), QStringLiteral("2"));
        c.model.goToNextSlide();  // last page of the first file: the next file's first
        c.settle();
        QCOMPARE(c.label("nextLabel"), QStringLiteral("1"));
        QTRY_VERIFY_WITH_TIMEOUT(preview->image(), 20000);
        c.model.goToNextSlide();  // end of the set
        c.settle();
        QVERIFY(!preview->image());
        QCOMPARE(preview->placeholder(), t("set.end"));
        QVERIFY(!c.find<QLabel>("nextLabel")->isVisible());
    }

    void setRowsSelectReorderAndDelete()
    {
        ConsoleProbe c;
        c.openSet({2, 3, 1});
        auto* list = c.find<SetListView>("setList");
        QCOMPARE(list->count(), 3);
        QCOMPARE(list->item(1)->text(), QStringLiteral("deck2\n3 sl."));
        // A click on a row selects that entry.
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(1)).center());
        QTRY_COMPARE(c.model.playlistIndex(), 1);
        QTRY_VERIFY(list->item(1)->font().bold());

        // Dragging the first row below the last: the model reorders, the rows follow.
        std::unique_ptr<QMimeData> rows(list->model()->mimeData({list->model()->index(0, 0)}));
        const QPoint below = list->visualItemRect(list->item(2)).center() + QPoint(0, 6);
        dragAndDrop(list->viewport(), below, rows.get());
        c.settle();
        QCOMPARE(c.names(), (QStringList{"deck2.pdf", "deck3.pdf", "deck1.pdf"}));
        QCOMPARE(list->item(2)->text().section(u'\n', 0, 0), QStringLiteral("deck1"));
        QCOMPARE(c.model.playlistIndex(), 0);  // the current entry moved with its row
        // Dropped in the upper half of a row: before it.
        std::unique_ptr<QMimeData> last(list->model()->mimeData({list->model()->index(2, 0)}));
        dragAndDrop(list->viewport(), list->visualItemRect(list->item(0)).topLeft() + QPoint(4, 2), last.get());
        c.settle();
        QCOMPARE(c.names(), (QStringList{"deck1.pdf", "deck2.pdf", "deck3.pdf"}));

        // Delete on the current row, then the context menu's remove.
        list->setFocus();
        list->setCurrentRow(1);
        QTest::keyClick(list, Qt::Key_Delete);
        c.settle();
        QCOMPARE(c.names(), (QStringList{"deck1.pdf", "deck3.pdf"}));
        QVERIFY(ConsoleProbe::pickFromMenu(
            [&] { contextMenuAt(list->viewport(), list->visualItemRect(list->item(0)).center()); },
            SetListView::removeText()));
        c.settle();
        QCOMPARE(c.names(), QStringList{"deck3.pdf"});
    }

    void emptySetHintsAndCannotBeSaved()
    {
        ConsoleProbe c;
        QVERIFY(c.find<QLabel>("setEmpty")->isVisible());
        QCOMPARE(c.label("setEmpty"), t("playlist.empty"));
        QPushButton* save = qobject_cast<QPushButton*>(c.button(t("save.show_ellipsis")));
        QAction* toolbarSave = c.find<QAction>("saveShow");
        QVERIFY(!save->isEnabled());
        QVERIFY(!toolbarSave->isEnabled());
        c.openSet({1});
        QVERIFY(save->isEnabled());
        QVERIFY(toolbarSave->isEnabled());
        QVERIFY(!c.find<QLabel>("setEmpty")->isVisible());
    }

    void cuesGoDeleteAndVanishWithTheDocument()
    {
        ConsoleProbe c;
        c.openSet({5});
        auto* section = c.window.findChild<CuesSection*>();
        auto* list = c.find<QTreeWidget>("cueList");
        QVERIFY(section->isVisible());
        QVERIFY(!list->isVisible());  // no cues yet: the hint instead
        QVERIFY(c.button(t("bookmark.this")));
        c.model.addBookmark(QStringLiteral("Chorus"), 3);
        c.model.addBookmark(QStringLiteral("Intro"), 0);
        c.settle();
        QCOMPARE(list->topLevelItemCount(), 2);
        QCOMPARE(list->topLevelItem(1)->text(0), QStringLiteral("Chorus"));
        QCOMPARE(list->topLevelItem(1)->text(1), QStringLiteral("4"));
        QCOMPARE(c.find<SetListView>("setList")->item(0)->text(), QStringLiteral("deck1\n5 sl. \u00B7 2 cues"));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->topLevelItem(1)).center());
        QTRY_COMPARE(c.model.pageIndex(), 3);
        list->setCurrentItem(list->topLevelItem(0));
        QTest::keyClick(list, Qt::Key_Delete);
        c.settle();
        QCOMPARE(c.model.currentCues().size(), std::size_t(1));
        QVERIFY(ConsoleProbe::pickFromMenu(
            [&] { contextMenuAt(list->viewport(), list->visualItemRect(list->topLevelItem(0)).center()); },
            SetListView::removeText()));
        c.settle();
        QVERIFY(c.model.currentCues().empty());

        c.model.closeDocument();
        c.settle();
        QVERIFY(!section->isVisible());
    }

    void outputPickersAndTogglesReachTheModel()
    {
        ConsoleProbe c;
        c.platform.screens->list = {PlatformScreen{1, "Laptop", QRectF(0, 0, 1440, 900), 2},
                                    PlatformScreen{2, "Projector", QRectF(1440, 0, 1920, 1080), 1}};
        c.platform.screens->mainId = 1;
        c.model.refreshDisplays();
        c.settle();
        auto* screen = c.find<QComboBox>("screenPicker");
        QCOMPARE(screen->count(), 2);
        QCOMPARE(screen->currentText(), QStringLiteral("Projector \u00B7 1920\u00D71080"));
        screen->activated(0);
        QCOMPARE(c.model.selectedDisplayID(), std::optional<uint32_t>(1));

        auto* aspect = c.find<QComboBox>("aspectPicker");
        auto* width = c.window.findChildren<QSpinBox*>().value(0);
        QVERIFY(!width->isVisible());
        aspect->activated(aspect->findText(t("aspect.custom")));
        QCOMPARE(c.model.aspect(), AspectMode::custom);
        c.settle();
        QVERIFY(width->isVisible());  // custom: its width and height
        width->setValue(1280);
        QCOMPARE(c.model.customWidth(), 1280);
        auto* fit = c.find<QComboBox>("fitPicker");
        fit->activated(fit->findText(t("fit.cover")));
        QCOMPARE(c.model.contentFit(), ContentFit::cover);

        const std::pair<const char*, obs::Observed<bool>*> toggles[] = {
            {"outputOnTop", &c.model.outputAlwaysOnTop},
            {"hideCursor", &c.model.hideOutputCursor},
            {"videoSource", &c.model.isSyphonEnabled},
            {"showOutput", &c.model.isOutputVisible},
        };
        for (const auto& [name, property] : toggles) {
            auto* box = c.find<QCheckBox>(name);
            const bool before = property->peek();
            QCOMPARE(box->isChecked(), before);
            box->click();
            QCOMPARE(property->peek(), !before);
        }
        c.model.isSyphonPublishing.set(true);
        c.settle();
        QVERIFY(c.label("sourceStatus").endsWith(t("syphon.live")));
    }

    void toolsFollowTheModelAndEnableOnlyWhatCanAct()
    {
        ConsoleProbe c;
        c.openSet({3});
        auto* undo = c.find<QPushButton>("undoStroke");
        auto* clear = c.find<QPushButton>("clearMarks");
        QVERIFY(!undo->isEnabled());
        QVERIFY(!clear->isEnabled());
        auto* marker = c.find<QToolButton>("tool.marker");
        marker->click();
        QCOMPARE(c.model.stageTool(), StageTool::marker);
        c.settle();
        QVERIFY(marker->isChecked());
        QCOMPARE(marker->toolTip(), t("marker"));
        c.model.handleCanvasPoint({0.2, 0.2}, false);
        c.model.handleCanvasPoint({0.6, 0.6}, true);
        c.settle();
        QVERIFY(undo->isEnabled());
        QVERIFY(clear->isEnabled());
        c.model.goToNextSlide();  // no marks on this page, but something to undo
        c.settle();
        QVERIFY(undo->isEnabled());
        QVERIFY(!clear->isEnabled());
        undo->click();
        c.settle();
        QVERIFY(!undo->isEnabled());

        auto* zoom = c.find<QSlider>("zoomSlider");
        QCOMPARE(zoom->minimum(), 12);
        QCOMPARE(zoom->maximum(), 60);
        zoom->setValue(35);
        QCOMPARE(c.model.zoomScale(), 3.5);

        const auto swatches = c.window.findChildren<ColorSwatch*>();
        QCOMPARE(swatches.size(), qsizetype(MarkColor::presets().size()));
        QVERIFY(swatches[0]->isRinged());
        QTest::mouseClick(swatches[3], Qt::LeftButton);
        QCOMPARE(c.model.markColor(), MarkColor::presets()[3]);
        QCOMPARE(c.platform.preferences->values.value("markGreen").toDouble(), MarkColor::presets()[3].green);
        c.settle();
        QVERIFY(swatches[3]->isRinged());
        QVERIFY(!swatches[0]->isRinged());

        c.find<QCheckBox>("blackoutToggle")->click();
        c.find<QCheckBox>("freezeToggle")->click();
        QVERIFY(c.model.isBlackout());
        QVERIFY(c.model.isFrozen());
    }

    void clickerShowsItsAccess()
    {
        ConsoleProbe c;
        auto* ask = c.find<QPushButton>("clickerAccess");
        QVERIFY(ask->isVisible());
        QVERIFY(!c.find<QLabel>("clickerActive")->isVisible());
        c.model.clickerTrusted.set(true);
        c.settle();
        QVERIFY(!ask->isVisible());
        QVERIFY(c.find<QLabel>("clickerActive")->isVisible());
        QVERIFY(childWithText<QLabel>(c.window, t("clicker.hint")));
    }
};

QTEST_MAIN(ConsoleSidebarTest)
#include "tst_ConsoleSidebar.moc"
