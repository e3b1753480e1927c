#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "support/ModelFixtures.h"
#include "support/TestPdf.h"

#include <QtTest>

namespace {

// Every value written to transitionProgress, in order.
class ProgressLog {
public:
    explicit ProgressLog(AppModel& model) : model_(model) { arm(); }
    std::vector<double> values;

private:
    void arm()
    {
        tracker_ = obs::withTracking([this] { (void)model_.transitionProgress(); }, [this] {
            values.push_back(model_.transitionProgress.peek());
            arm();
        });
    }
    AppModel& model_;
    obs::TrackerPtr tracker_;
};
}

class TransitionsTest : public QObject {
    Q_OBJECT

    TestFolder folder;
    QString ten, three;

private slots:
    void initTestCase()
    {
        ten = folder.pdf("ten.pdf", 10);
        three = folder.pdf("three.pdf", 3, TestPdf::standard);
    }

    void easing()
    {
        const std::pair<double, double> cases[] = {{0, 0}, {0.5, 0.5}, {1, 1}, {0.25, 0.125}, {0.75, 0.875}, {-1, 0}, {2, 1}};
        for (const auto& [t, eased] : cases)
            QCOMPARE(AppModel::transitionEase(t), eased);
    }

    void openingAndStyleNoneCut()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten});
        QCOMPARE(model.transitionProgress(), 1.0);
        QVERIFY(!model.outgoingSlideImage());
        model.transitionStyle.set(TransitionStyle::none);
        ProgressLog log(model);
        model.goToNextSlide();
        platform.scheduler->advance(1);
        QVERIFY(log.values.empty());
        QVERIFY(!model.outgoingSlideImage());
        QCOMPARE(TestPdf::pageShown(model.incomingSlideImage()), 1);
    }

    void shortDurations()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten});
        model.transitionDuration.set(0.04);
        model.goToNextSlide();
        QCOMPARE(model.transitionProgress(), 1.0);
        QVERIFY(!model.outgoingSlideImage());

        // Just above the cut: a fade of the 0.12 s floor.
        model.transitionDuration.set(0.05);
        model.goToNextSlide();
        QCOMPARE(model.transitionProgress(), 0.0);
        QCOMPARE(TestPdf::pageShown(model.outgoingSlideImage()), 1);
        QCOMPARE(TestPdf::pageShown(model.incomingSlideImage()), 2);
        platform.scheduler->advance(0.11);
        QVERIFY(model.transitionProgress() < 1.0);
        platform.scheduler->advance(0.03);
        QCOMPARE(model.transitionProgress(), 1.0);
        QVERIFY(!model.outgoingSlideImage());
    }

    void aFullFadeRisesInSmallStepsAndEndsAtExactlyOne()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten});
        ProgressLog log(model);
        const double start = platform.scheduler->now();
        model.goToNextSlide();
        platform.scheduler->runAll();
        QVERIFY(platform.scheduler->now() - start >= 0.45);
        QVERIFY(platform.scheduler->now() - start < 0.47);
        QCOMPARE(log.values.front(), 0.0);
        QCOMPARE(log.values.back(), 1.0);
        const std::vector<double> rising(log.values.begin() + 1, log.values.end() - 1);
        QVERIFY2(rising.size() >= 26 && rising.size() <= 30, qPrintable(QString::number(rising.size())));
        double last = 0;
        for (double v : rising) {
            QVERIFY(v > last);
            QVERIFY(v < 1.0);
            last = v;
        }
    }

    void aNewPressRestartsFromThePageJustLeft()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten});
        model.goToNextSlide();
        platform.scheduler->advance(0.1);
        model.goToNextSlide();
        platform.scheduler->advance(0.1);
        QVERIFY(model.transitionProgress() < 0.5);
        model.goToNextSlide();
        QCOMPARE(model.transitionProgress(), 0.0);
        QCOMPARE(TestPdf::pageShown(model.outgoingSlideImage()), 2);
        QCOMPARE(TestPdf::pageShown(model.incomingSlideImage()), 3);
        platform.scheduler->advance(0.44);
        QVERIFY(model.transitionProgress() < 1.0);
        // Done within one 16 ms step after 0.45 s from the last press.
        platform.scheduler->advance(0.026);
        QCOMPARE(model.transitionProgress(), 1.0);
        QVERIFY(!model.outgoingSlideImage());
    }

    // Every way of cutting in the middle of a fade ends it for good: the
    // picture is whole at once and the old fade never writes again.
    void aCutMidFadeStopsItForGood_data()
    {
        QTest::addColumn<QString>("cut");
        QTest::newRow("a press with the cut style") << "press";
        QTest::newRow("another set loaded") << "load";
        QTest::newRow("the current file removed from the set") << "remove";
        QTest::newRow("the document closed") << "close";
    }

    void aCutMidFadeStopsItForGood()
    {
        QFETCH(QString, cut);
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten, three});
        model.goToNextSlide();
        platform.scheduler->advance(0.1);
        QVERIFY(model.transitionProgress() < 1.0);
        QVERIFY(model.outgoingSlideImage());

        if (cut == "press") {
            model.transitionStyle.set(TransitionStyle::none);
            model.goToNextSlide();
        } else if (cut == "load") {
            // Opening files loads without animation: shown at once.
            model.replacePlaylist({three});
        } else if (cut == "remove") {
            model.removePlaylistItem(model.playlist()[0].id);
        } else {
            model.closeDocument();
        }
        QCOMPARE(model.transitionProgress(), 1.0);
        QVERIFY(!model.outgoingSlideImage());
        ProgressLog log(model);
        platform.scheduler->runAll();
        QVERIFY(log.values.empty());
        QVERIFY(!model.outgoingSlideImage());
        QVERIFY(!model.needsLiveOutput());
        if (cut == "load" || cut == "remove")
            QCOMPARE(TestPdf::pageShown(model.incomingSlideImage()), 0);
    }

    void unfreezeFadesFromTheHeldPage()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten});
        model.goToPage(2);
        platform.scheduler->runAll();
        model.toggleFreeze();
        model.goToPage(6);
        QCOMPARE(model.transitionProgress(), 1.0);  // frozen: no fade
        model.toggleFreeze();
        QCOMPARE(model.transitionProgress(), 0.0);
        QCOMPARE(TestPdf::pageShown(model.outgoingSlideImage()), 2);
        QCOMPARE(TestPdf::pageShown(model.incomingSlideImage()), 6);
        platform.scheduler->runAll();

        // Unfreezing on the held page changes nothing.
        model.toggleFreeze();
        model.toggleFreeze();
        QCOMPARE(model.transitionProgress(), 1.0);
        QVERIFY(!model.outgoingSlideImage());
    }
};

QTEST_MAIN(TransitionsTest)
#include "tst_Transitions.moc"
