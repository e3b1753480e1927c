#include "l10n/L10n.h"
#include "support/ShownMainWindow.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QUrl>
#include <QtTest>

namespace {

QMimeData* fileDrag(const QStringList& paths)
{
    auto* mime = new QMimeData;
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls << QUrl::fromLocalFile(path);
    mime->setUrls(urls);
    return mime;
}

QMimeData* textDrag(const QString& text)
{
    auto* mime = new QMimeData;
    mime->setText(text);
    return mime;
}

}

// The window's drop handling, driven by the events a real drag delivers.
class IntakeDropTest : public QObject {
    Q_OBJECT

    struct Window : ShownMainWindow {
        Window() { QVERIFY(QTest::qWaitForWindowExposed(&window)); }
        // Events go to the platform window, which routes them as it does a
        // real drag: from the widget under the pointer (the stage) upwards.
        QPoint middle() const { return window.rect().center(); }
        void deliver(QEvent* event) { QApplication::sendEvent(window.windowHandle(), event); }
        QLabel* highlight() const { return window.findChild<QLabel*>(QStringLiteral("dropHighlight")); }
        bool highlighted() const { return highlight() && highlight()->isVisible(); }

        bool enter(QMimeData* mime)
        {
            QDragEnterEvent event(middle(), Qt::CopyAction | Qt::MoveAction, mime, Qt::LeftButton, Qt::NoModifier);
            deliver(&event);
            return event.isAccepted() && event.dropAction() == Qt::CopyAction;
        }
        bool move(QMimeData* mime)
        {
            QDragMoveEvent event(middle() + QPoint(30, 20), Qt::CopyAction | Qt::MoveAction, mime, Qt::LeftButton, Qt::NoModifier);
            deliver(&event);
            return event.isAccepted();
        }
        void leave()
        {
            QDragLeaveEvent event;
            deliver(&event);
        }
        bool drop(QMimeData* mime)
        {
            QDropEvent event(QPointF(middle() + QPoint(30, 20)), Qt::CopyAction | Qt::MoveAction, mime, Qt::LeftButton, Qt::NoModifier);
            deliver(&event);
            return event.isAccepted() && event.dropAction() == Qt::CopyAction;
        }
    };

private slots:
    void aFileDragIsHighlightedUntilItLeaves()
    {
        Window w;
        std::unique_ptr<QMimeData> mime(fileDrag({w.pdf("a.pdf", 1)}));
        QVERIFY(w.enter(mime.get()));
        QVERIFY(w.highlighted());
        QCOMPARE(w.highlight()->text(), L10n::t("drop.set"));
        QCOMPARE(w.highlight()->geometry().center(), w.window.rect().center());
        QVERIFY(w.highlight()->testAttribute(Qt::WA_TransparentForMouseEvents));
        QVERIFY(w.move(mime.get()));
        w.leave();
        QVERIFY(!w.highlighted());
        QVERIFY(w.model.playlist().empty());
    }

    void dragsWithoutFilesAreRefused()
    {
        Window w;
        std::unique_ptr<QMimeData> words(textDrag("some words"));
        QVERIFY(!w.enter(words.get()));
        QVERIFY(!w.move(words.get()));
        QVERIFY(!w.highlighted());

        auto web = std::make_unique<QMimeData>();
        web->setUrls({QUrl("https://example.com/deck.pdf")});
        QVERIFY(!w.enter(web.get()));
        QVERIFY(!w.drop(web.get()));
        QVERIFY(!w.highlighted());
        QCoreApplication::processEvents();
        QVERIFY(w.model.playlist().empty());
    }

    void droppedFilesAndFoldersMakeTheSetThenGrowIt()
    {
        Window w;
        for (const char* name : {"Slide 10.pdf", "Slide 2.pdf", ".hidden.pdf"})
            w.pdf(QString("deck/") + name, 1);
        std::unique_ptr<QMimeData> mime(fileDrag({w.pdf("a.pdf", 2), w.file("deck"), w.file("notes.txt")}));
        QVERIFY(w.enter(mime.get()));
        QVERIFY(w.drop(mime.get()));
        QVERIFY(!w.highlighted());
        QTRY_COMPARE_WITH_TIMEOUT(w.names(), (QStringList{"a.pdf", "Slide 2.pdf", "Slide 10.pdf"}), 10000);

        // The text form of a path, as some programs drag it: appended.
        std::unique_ptr<QMimeData> text(textDrag(" " + w.pdf("extra one.pdf", 1) + "\n"));
        QVERIFY(w.enter(text.get()));
        QVERIFY(w.drop(text.get()));
        QTRY_COMPARE_WITH_TIMEOUT(w.names(), (QStringList{"a.pdf", "Slide 2.pdf", "Slide 10.pdf", "extra one.pdf"}), 10000);
        QCOMPARE(w.model.playlistIndex(), 0);
        QVERIFY(w.alerts().isEmpty());
    }
};

QTEST_MAIN(IntakeDropTest)
#include "tst_IntakeDrop.moc"
