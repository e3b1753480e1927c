#include "model/AppModel.h"
#include "model/Observation.h"
#include "platform/MuPdfEngine.h"
#include "support/FakePlatform.h"
#include "support/ModelFixtures.h"
#include "support/TestPdf.h"

#include <QtTest>

#include <memory>

using obs::Observed;

class ObservationTest : public QObject {
    Q_OBJECT

    // Assigning `first` again is no change and tells nobody; assigning
    // `other` is a change, told once.
    template <typename T>
    static void checkAssignments(const T& first, const T& other)
    {
        Observed<T> value{first};
        int told = 0;
        auto tracker = obs::withTracking([&] { (void)value(); }, [&] { ++told; });
        QVERIFY(!value.set(first));
        QCOMPARE(told, 0);
        QVERIFY(value.set(other));
        QCOMPARE(told, 1);
        QCOMPARE(value.peek(), other);
    }

private slots:
    void assignmentsCompareValuesButImagesAndDocumentsByIdentity()
    {
        checkAssignments(3, 4);
        // Equal pixels in another object are another image.
        auto image = std::make_shared<const QImage>(4, 4, QImage::Format_RGB32);
        checkAssignments<ImagePtr>(image, std::make_shared<const QImage>(*image));
        // The same file opened twice is two documents.
        TestFolder folder;
        const QString path = folder.pdf("doc.pdf", 1);
        MuPdfEngine engine;
        checkAssignments(std::get<PdfDocumentPtr>(engine.open(path)), std::get<PdfDocumentPtr>(engine.open(path)));
    }

    void inPlaceChangeAlwaysNotifies()
    {
        Observed<bool> flag{false};
        int told = 0;
        auto tracker = obs::withTracking([&] { (void)flag(); }, [&] { ++told; });
        // Toggling twice ends where it began, but each change is real.
        flag.mutate([](bool& b) { b = !b; });
        QCOMPARE(told, 1);
        tracker = obs::withTracking([&] { (void)flag(); }, [&] { ++told; });
        flag.mutate([](bool& b) { b = b; });
        QCOMPARE(told, 2);

        // Appending nothing to a string, or storing the same image again
        // into a map, is still an in-place change.
        Observed<QString> text{QStringLiteral("12")};
        Observed<std::map<int, ImagePtr>> map;
        auto image = std::make_shared<const QImage>(2, 2, QImage::Format_RGB32);
        map.mutate([&](auto& m) { m[0] = image; });
        int toldText = 0;
        int toldMap = 0;
        auto t1 = obs::withTracking([&] { (void)text(); }, [&] { ++toldText; });
        auto t2 = obs::withTracking([&] { (void)map(); }, [&] { ++toldMap; });
        text.mutate([](QString& s) { s += QString(); });
        map.mutate([&](auto& m) { m[0] = image; });
        QCOMPARE(toldText, 1);
        QCOMPARE(toldMap, 1);
        QCOMPARE(text.peek(), QStringLiteral("12"));
        // The same value assigned through the setter is no change at all.
        t1 = obs::withTracking([&] { (void)text(); }, [&] { ++toldText; });
        text.set(QStringLiteral("12"));
        QCOMPARE(toldText, 1);
        QVERIFY(t1->isArmed());
    }

    void scopeIsToldOnceAndOnlyForWhatItRead()
    {
        Observed<int> read{1};
        Observed<int> other{1};
        int told = 0;
        auto tracker = obs::withTracking([&] { (void)read(); }, [&] { ++told; });
        other.set(2);
        QCOMPARE(told, 0);
        read.set(2);
        read.set(3);
        QCOMPARE(told, 1);
        QVERIFY(!tracker->isArmed());
    }

    void nestedScopeReadsCountForTheOuterScope()
    {
        Observed<int> outerOnly{1};
        Observed<int> innerOnly{1};
        int toldOuter = 0;
        int toldInner = 0;
        obs::TrackerPtr inner;
        auto outer = obs::withTracking(
            [&] {
                (void)outerOnly();
                inner = obs::withTracking([&] { (void)innerOnly(); }, [&] { ++toldInner; });
            },
            [&] { ++toldOuter; });
        QVERIFY(!obs::isTracking());
        outerOnly.set(2);  // not read by the inner scope
        QCOMPARE(toldInner, 0);
        QCOMPARE(toldOuter, 1);
        outer = obs::withTracking([&] { inner = obs::withTracking([&] { (void)innerOnly(); }, [&] { ++toldInner; }); },
                                  [&] { ++toldOuter; });
        innerOnly.set(2);
        QCOMPARE(toldInner, 1);
        QCOMPARE(toldOuter, 2);
    }

    void readsWithoutTrackingRegisterNothing()
    {
        Observed<int> value{1};
        int told = 0;
        auto tracker = obs::withTracking([&] { (void)value.peek(); }, [&] { ++told; });
        value.set(2);
        QCOMPARE(told, 0);
        QVERIFY(!obs::isTracking());
    }

    void droppedTrackerIsNeverTold()
    {
        Observed<int> value{1};
        int told = 0;
        auto tracker = obs::withTracking([&] { (void)value(); }, [&] { ++told; });
        tracker.reset();
        value.set(2);
        QCOMPARE(told, 0);
    }

    void derivedValuesAreSeenThrough()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        int told = 0;
        // Without a document canGoNext reads only `document`: other
        // properties are none of its business.
        auto tracker = obs::withTracking([&model = model] { QVERIFY(!model.canGoNext()); }, [&] { ++told; });
        model.pageCount.set(5);
        model.isBlackout.set(true);
        QCOMPARE(told, 0);

        model.replacePlaylist({folder.pdf("a.pdf", 3), folder.pdf("b.pdf", 2)});
        QCOMPARE(told, 1);  // `document` changed

        // With a document it reads the page behind it: the reader of the
        // derived value alone hears of a page move, once however many follow.
        told = 0;
        tracker = obs::withTracking([&model = model] { QVERIFY(model.canGoNext()); }, [&] { ++told; });
        model.isFrozen.set(true);
        QCOMPARE(told, 0);
        model.goToNextSlide();
        model.goToNextSlide();
        QCOMPARE(told, 1);

        // At the last page of a file it reads the set position as well.
        told = 0;
        tracker = obs::withTracking([&model = model] { QVERIFY(model.canGoNext()); }, [&] { ++told; });
        model.playlist.mutate([](auto&) {});
        QCOMPARE(told, 1);

        told = 0;
        tracker = obs::withTracking([&model = model] { (void)model.showTitle(); }, [&] { ++told; });
        model.showFileURL.set(QStringLiteral("/shows/gig.brelvonic"));
        QCOMPARE(told, 1);
    }

    void assignHookRunsOnEveryAssignment()
    {
        Observed<int> value{1};
        int hooked = 0;
        value.setAssignHook([&](const int&) { ++hooked; });
        value.set(1);
        value.set(2);
        QCOMPARE(hooked, 2);
    }

    void followerUpdatesOncePerTurn()
    {
        Observed<int> a{0};
        Observed<int> b{0};
        int seen = 0;
        obs::Follower follower([&] { seen = a() + b(); });
        follower.start();
        QCOMPARE(follower.updateCount(), 1);
        a.set(1);
        b.set(2);
        a.set(3);
        QCOMPARE(follower.updateCount(), 1);  // queued, not run inside the setter
        QCoreApplication::processEvents();
        QCOMPARE(follower.updateCount(), 2);
        QCOMPARE(seen, 5);
        // It re-armed: the next change brings one more update.
        b.set(5);
        QCoreApplication::processEvents();
        QCOMPARE(follower.updateCount(), 3);
        QCOMPARE(seen, 8);
        follower.stop();
        a.set(10);
        QCoreApplication::processEvents();
        QCOMPARE(follower.updateCount(), 3);
    }

    void spentReadersDoNotPileUp()
    {
        // A property read by a follower thousands of times but never changed
        // must not keep thousands of registrations alive.
        Observed<int> value{0};
        Observed<int> trigger{0};
        for (int i = 0; i < 1000; ++i) {
            auto tracker = obs::withTracking([&] { (void)value(); (void)trigger(); }, [] {});
            trigger.set(i + 1);
        }
        QVERIFY2(value.readerCount() <= 16, qPrintable(QString::number(value.readerCount())));
        int told = 0;
        auto tracker = obs::withTracking([&] { (void)value(); }, [&] { ++told; });
        value.set(1);
        QCOMPARE(told, 1);
    }
};

QTEST_MAIN(ObservationTest)
#include "tst_Observation.moc"
