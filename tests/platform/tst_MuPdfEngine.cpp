#include "platform/MuPdfEngine.h"
#include "support/TestPdf.h"

#include <QtTest>

#include <sys/stat.h>

#include <QThread>

#include <map>
#include <thread>

using TestPdf::near;
using ImagePtr = std::shared_ptr<const QImage>;

namespace {
PdfDocumentPtr openOk(MuPdfEngine& engine, const QString& path)
{
    auto result = engine.open(path);
    auto* doc = std::get_if<PdfDocumentPtr>(&result);
    return doc ? *doc : nullptr;
}
}

class MuPdfEngineTest : public QObject {
    Q_OBJECT

    TestFolder folder;
    MuPdfEngine engine;

private slots:
    void pagesAndSizes()
    {
        auto wide = openOk(engine, folder.pdf("wide.pdf", 5, TestPdf::widescreen));
        auto four = openOk(engine, folder.pdf("four.pdf", 2, TestPdf::standard));
        QVERIFY(wide && four);
        QCOMPARE(wide->pageCount(), 5);
        QCOMPARE(four->pageCount(), 2);
        QCOMPARE(wide->pageSize(0).toSize(), QSize(960, 540));
        QCOMPARE(four->pageSize(1).toSize(), QSize(800, 600));
        QVERIFY(wide->pageSize(5).isEmpty());
        QVERIFY(wide->pageSize(-1).isEmpty());
    }

    void renderFitsTheBoxKeepingTheAspect()
    {
        auto wide = openOk(engine, folder.pdf("fit-wide.pdf", 3, TestPdf::widescreen));
        auto four = openOk(engine, folder.pdf("fit-four.pdf", 1, TestPdf::standard));
        QCOMPARE(wide->render(0, QSize(320, 320))->size(), QSize(320, 180));
        QCOMPARE(wide->render(0, QSize(1920, 1080))->size(), QSize(1920, 1080));
        QCOMPARE(four->render(0, QSize(1920, 1080))->size(), QSize(1440, 1080));
        QCOMPARE(four->render(0, QSize(1920, 1080))->format(), QImage::Format_ARGB32_Premultiplied);
        QVERIFY(!wide->render(3, QSize(320, 320)));
        QVERIFY(!wide->render(-1, QSize(320, 320)));
        QVERIFY(!wide->render(0, QSize(0, 0)));
    }

    void pixelsShowThePage()
    {
        auto doc = openOk(engine, folder.pdf("colours.pdf", 3));
        for (int i = 0; i < 3; ++i) {
            auto image = doc->render(i, QSize(192, 108));
            QVERIFY(near(image->pixel(3, 3), TestPdf::pageRgb(i)));
        }
        QVERIFY(!near(doc->render(1, QSize(192, 108))->pixel(3, 3), TestPdf::pageRgb(0)));
    }

    void pagesAreMeasuredAndDrawnOverTheirMediaBox()
    {
        // Page 1 is cropped to its left half; slides are shown whole.
        const QString path = folder.file("cropped.pdf");
        QVERIFY(TestPdf::writeCropped(path, 2));
        auto doc = openOk(engine, path);
        QVERIFY(doc);
        QCOMPARE(doc->pageSize(0).toSize(), QSize(960, 540));
        QCOMPARE(doc->pageSize(1).toSize(), QSize(540, 960));  // turned
        auto image = doc->render(0, QSize(320, 320));
        QCOMPARE(image->size(), QSize(320, 180));
        // The right half, outside the crop box, is drawn in the page's colour.
        QVERIFY(near(image->pixel(3, 3), TestPdf::pageRgb(0)));
        QVERIFY(near(image->pixel(316, 176), TestPdf::pageRgb(0)));
        auto turned = doc->render(1, QSize(320, 320));
        QCOMPARE(turned->size(), QSize(180, 320));
        QVERIFY(near(turned->pixel(176, 316), TestPdf::pageRgb(1)));
    }

    void outlinedLettersKeepTheirInsideEmpty()
    {
        // Stroked text is drawn as the glyphs' outlines: along a row through
        // the letter's stem, its two edges are dark and the stem between
        // them shows the page, as when the library strokes glyphs itself.
        const QString path = folder.file("outlined.pdf");
        TestPdf::writeOutlinedLetter(path);
        auto doc = openOk(engine, path);
        QVERIFY(doc);
        auto image = doc->render(0, QSize(200, 400));
        QVERIFY(image);
        QCOMPARE(image->size(), QSize(200, 400));
        const int row = 233;  // halfway up the letter
        std::vector<std::pair<int, int>> dark;  // runs: first, last
        for (int x = 0; x < image->width(); ++x) {
            if (qGray(image->pixel(x, row)) >= 128)
                continue;
            if (!dark.empty() && dark.back().second == x - 1)
                dark.back().second = x;
            else
                dark.emplace_back(x, x);
        }
        QCOMPARE(dark.size(), std::size_t(2));
        for (const auto& [first, last] : dark)
            QVERIFY2(last - first + 1 >= 2 && last - first + 1 <= 7, qPrintable(QString::number(last - first + 1)));
        const int inside = dark[1].first - dark[0].second - 1;
        QVERIFY2(inside >= 15, qPrintable(QString::number(inside)));
        QVERIFY(qGray(image->pixel((dark[0].second + dark[1].first) / 2, row)) > 240);
    }

    void brokenFilesFailWithAReason()
    {
        using Kind = PdfOpenError::Kind;
        struct Case {
            QString name;
            Kind kind;
            std::function<void(const QString&)> make;
        };
        const std::vector<Case> cases{
            {"missing.pdf", Kind::other, [](const QString&) {}},
            {"empty.pdf", Kind::notPdf, [](const QString& p) { TestPdf::writeEmpty(p); }},
            {"text.pdf", Kind::notPdf, [](const QString& p) { TestPdf::writeNotPdf(p); }},
            {"truncated.pdf", Kind::damaged, [](const QString& p) { QVERIFY(TestPdf::writeTruncated(p)); }},
            // Believing the claimed count used to size memory for every page.
            {"huge-count.pdf", Kind::damaged, [](const QString& p) { TestPdf::writeHugePageCount(p); }},
            {"locked.pdf", Kind::password,
             [](const QString& p) {
                 // A genuine locked deck: the right password opens it.
                 QVERIFY(TestPdf::writeEncrypted(p, "stage"));
                 QVERIFY(TestPdf::opensWithPassword(p, "stage"));
                 QVERIFY(!TestPdf::opensWithPassword(p, "guess"));
             }},
            {"folder.pdf", Kind::notPdf, [](const QString& p) { QDir().mkpath(p); }},
            // A pipe would block a read for ever: it must be refused unread.
            {"pipe.pdf", Kind::notPdf,
             [](const QString& p) { QVERIFY(::mkfifo(QFile::encodeName(p).constData(), 0600) == 0); }},
        };
        for (const auto& c : cases) {
            const QString path = folder.file(c.name);
            c.make(path);
            auto result = engine.open(path);
            auto* error = std::get_if<PdfOpenError>(&result);
            QVERIFY2(error, qPrintable(c.name));
            QVERIFY2(!error->reason.isEmpty(), qPrintable(c.name));
            QVERIFY2(error->kind == c.kind, qPrintable(c.name + u' ' + error->reason));
        }
    }

    void requestsAnswerOnTheMainThreadAndCancelledOnesNever()
    {
        auto doc = openOk(engine, folder.pdf("ask.pdf", 4));
        const QSize box(640, 360);
        std::map<int, ImagePtr> got;
        std::vector<Qt::HANDLE> threads;
        std::vector<RenderTicketPtr> tickets;
        for (int i = 0; i < 4; ++i)
            tickets.push_back(doc->request(i, box, RenderUrgency::ahead, [&, i](ImagePtr image) {
                got[i] = image;
                threads.push_back(QThread::currentThreadId());
            }));
        tickets[3]->cancel();
        bool missing = false;
        auto outOfRange = doc->request(9, box, RenderUrgency::shown, [&](ImagePtr image) { missing = !image; });
        QVERIFY(got.empty());  // never inside the call
        QTRY_COMPARE(got.size(), std::size_t(3));
        QTRY_VERIFY(missing);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(TestPdf::pageShown(got[i]), i);
        QVERIFY(std::all_of(threads.begin(), threads.end(), [&](auto t) { return t == QThread::currentThreadId(); }));
        // What was rendered is found at once, the same object, without work.
        QCOMPARE(doc->cached(1, box), got[1]);
        QCOMPARE(doc->render(1, box), got[1]);
        QVERIFY(!doc->cached(1, QSize(641, 360)));
        QCoreApplication::processEvents();
        QVERIFY(!got.count(3));
        // Dropping documents while their renders run must be harmless.
        for (int i = 0; i < 5; ++i) {
            auto temp = openOk(engine, folder.file("ask.pdf"));
            temp->request(i % 4, QSize(1920, 1080), RenderUrgency::ahead, {});
        }
    }

    void theSlideWaitedForOvertakesRendersAhead()
    {
        auto doc = openOk(engine, folder.pdf("busy.pdf", 24));
        const QSize box(1920, 1080);
        int aheadDone = 0;
        int aheadDoneWhenShown = -1;
        std::vector<RenderTicketPtr> tickets;
        for (int i = 1; i < 24; ++i)
            tickets.push_back(doc->request(i, box, RenderUrgency::ahead, [&](ImagePtr) { ++aheadDone; }));
        for (int i = 0; i < 24; ++i)
            tickets.push_back(doc->request(i, QSize(320, 320), RenderUrgency::thumbnail, {}));
        auto shown = doc->request(0, box, RenderUrgency::shown, [&](ImagePtr image) {
            QVERIFY(image);
            aheadDoneWhenShown = aheadDone;
        });
        QTRY_VERIFY_WITH_TIMEOUT(aheadDoneWhenShown >= 0, 20000);
        // Its own worker takes it at once, whatever waits in the queue.
        QVERIFY2(aheadDoneWhenShown < 12, qPrintable(QString::number(aheadDoneWhenShown)));
        for (auto& ticket : tickets)
            ticket->cancel();
    }

    void farFilesLetGoAndComeBack()
    {
        MuPdfEngine own;
        const QSize box(480, 270);
        std::vector<PdfDocumentPtr> docs;
        for (int i = 0; i < 6; ++i) {
            docs.push_back(openOk(own, folder.pdf(QString("far%1.pdf").arg(i), 3)));
            QVERIFY(docs.back()->render(1, box));
        }
        QCOMPARE(own.usage().parsedDocuments, 6);
        for (int i = 1; i < 6; ++i)
            docs[std::size_t(i)]->setNear(false);
        QVERIFY(!docs[3]->cached(1, box));  // its pictures go at once
        QVERIFY(docs[0]->cached(1, box));
        QTRY_COMPARE(own.usage().parsedDocuments, 1 + MuPdfEngine::spareDocuments);
        QCOMPARE(own.usage().nearDocuments, 1);
        // A far file still draws, parsed again on a worker.
        docs[1]->setNear(true);
        ImagePtr again;
        docs[1]->request(2, box, RenderUrgency::shown, [&](ImagePtr image) { again = image; });
        QTRY_VERIFY(again);
        QCOMPARE(TestPdf::pageShown(again), 2);
    }

    void picturesAndListsStayWithinTheirCaps()
    {
        MuPdfEngine own;
        auto doc = openOk(own, folder.pdf("caps.pdf", 30));
        const QSize slide(1920, 1080);
        const auto kept = doc->render(1, slide);
        // A window resized live asks for a new size at every step.
        const auto first = doc->render(0, slide);
        for (int width = 1900; width < 1920; ++width)
            QVERIFY(doc->render(0, QSize(width, 1080)));
        for (int i = 0; i < doc->pageCount(); ++i)
            QVERIFY(doc->render(i, QSize(320, 320)));
        const auto usage = own.usage();
        QVERIFY(usage.slideBytes <= MuPdfEngine::slideBudget);
        QVERIFY(usage.thumbnailBytes <= MuPdfEngine::thumbnailBudget);
        QVERIFY(usage.lists <= MuPdfEngine::listsPerDocument);
        QVERIFY(!doc->cached(0, slide));  // the oldest slide went first
        QVERIFY(doc->cached(19, QSize(320, 320)));
        QVERIFY(first && kept);
    }

    void rendersFromTwoThreadsAtOnce()
    {
        auto doc = openOk(engine, folder.pdf("threads.pdf", 6));
        std::vector<bool> ok(12, false);
        auto work = [&](int offset) {
            for (int i = 0; i < 6; ++i) {
                auto image = doc->render(i, QSize(200 + offset, 200));
                ok[std::size_t(offset * 6 + i)] = image && near(image->pixel(2, 2), TestPdf::pageRgb(i));
            }
        };
        std::thread a(work, 0);
        std::thread b(work, 1);
        a.join();
        b.join();
        for (bool each : ok)
            QVERIFY(each);
    }
};

QTEST_MAIN(MuPdfEngineTest)
#include "tst_MuPdfEngine.moc"
