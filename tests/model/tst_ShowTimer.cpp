#include "model/AppModel.h"
#include "base/TimeFormat.h"
#include "support/FakePlatform.h"
#include "support/ModelFixtures.h"
#include "support/TestPdf.h"

#include <QtTest>

#include <limits>

class ShowTimerTest : public QObject {
    Q_OBJECT

private slots:
    void durationFormat()
    {
        // Truncated to whole seconds; hours only from one hour; nothing
        // negative or not finite.
        const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
        const std::pair<double, const char*> cases[] = {{0, "0:00"},       {59.9, "0:59"},      {61, "1:01"},
                                                        {3599.99, "59:59"}, {3600, "1:00:00"},   {36000, "10:00:00"},
                                                        {-5, "0:00"},       {nan, "0:00"},       {inf, "0:00"}};
        for (const auto& [seconds, text] : cases)
            QCOMPARE(TimeFormat::duration(seconds), QString::fromLatin1(text));
    }

    void pauseResumeAndReset()
    {
        auto&& [platform, model] = ModelOnFakes();
        QCOMPARE(model.timerElapsed(), 0.0);
        model.toggleTimer();
        QVERIFY(model.isTimerRunning());
        platform.scheduler->advance(10);
        model.toggleTimer();
        QVERIFY(!model.isTimerRunning());
        QVERIFY(!model.timerStartedAt());
        platform.scheduler->advance(100);  // paused time does not count
        QCOMPARE(model.timerElapsed(), 10.0);
        model.toggleTimer();
        platform.scheduler->advance(5);
        QCOMPARE(model.timerElapsed(), 15.0);

        // Reset while running: back to zero and still running.
        model.resetTimer();
        QVERIFY(model.isTimerRunning());
        QCOMPARE(model.timerElapsed(), 0.0);
        platform.scheduler->advance(2);
        QCOMPARE(model.timerElapsed(), 2.0);

        // Reset while paused: stays paused at zero.
        model.toggleTimer();
        model.resetTimer();
        QVERIFY(!model.isTimerRunning());
        QVERIFY(!model.timerStartedAt());
        QCOMPARE(model.timerElapsed(), 0.0);
    }

    void loadingASetStartsOnlyANeverRunTimer()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        const QString a = folder.pdf("a.pdf", 2);
        const QString b = folder.pdf("b.pdf", 2);
        model.replacePlaylist({a});
        QVERIFY(model.isTimerRunning());
        QCOMPARE(TimeFormat::duration(model.timerElapsed()), QStringLiteral("0:00"));
        platform.scheduler->advance(10);
        model.toggleTimer();
        QCOMPARE(TimeFormat::duration(model.timerElapsed()), QStringLiteral("0:10"));

        // Paused at 0:10: another set, or an append, leaves it paused.
        platform.scheduler->advance(30);
        model.replacePlaylist({b});
        model.closeDocument();
        model.appendToPlaylist({a});
        QVERIFY(!model.isTimerRunning());
        QCOMPARE(model.timerElapsed(), 10.0);

        // Page moves and closing leave a running timer alone.
        model.toggleTimer();
        model.goToNextSlide();
        model.closeDocument();
        QVERIFY(model.isTimerRunning());

        // A reset while paused makes the next set start it again.
        model.toggleTimer();
        model.resetTimer();
        model.replacePlaylist({b});
        QVERIFY(model.isTimerRunning());
        platform.scheduler->advance(3);
        QCOMPARE(model.timerElapsed(), 3.0);

        // A set that fails to load starts nothing.
        model.toggleTimer();
        model.resetTimer();
        model.replacePlaylist({folder.file("missing.pdf")});
        QVERIFY(!model.isTimerRunning());
    }

    void remainingTime()
    {
        auto&& [platform, model] = ModelOnFakes();
        QVERIFY(!model.timerRemaining());
        model.plannedDuration.set(60);
        model.toggleTimer();
        platform.scheduler->advance(45);
        QCOMPARE(*model.timerRemaining(), 15.0);
        platform.scheduler->advance(45);
        QCOMPARE(*model.timerRemaining(), 0.0);  // 1:30 of a 1:00 plan: 0:00 left
        model.plannedDuration.set(-1);
        QVERIFY(!model.timerRemaining());
    }
};

QTEST_MAIN(ShowTimerTest)
#include "tst_ShowTimer.moc"
