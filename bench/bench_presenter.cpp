// What the operator feels on real decks, driven through the model with the
// real engine and the real main loop:
//   - press → stage image ready for next, previous, a typed jump and a cue;
//   - the longest main-thread stall while a file loads and its thumbnails run,
//     and presses every 350 ms through all decks as one set while passes run;
//   - peak RSS of a 50-file set paged through (a child process);
//   - RSS slope over many slide changes (a child process);
//   - cold render ms per page at 1920×1080.
//
// Usage: bench_presenter [--changes N] [--set DIR] [deck.pdf ...]
// Without decks it generates a 30-page deck and a 50-file set.
#include "model/AppModel.h"
#include "platform/MuPdfEngine.h"
#include "platform/QtScheduler.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QProcess>
#include <QRandomGenerator>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <vector>

namespace {

double nowMs()
{
    static QElapsedTimer clock = [] {
        QElapsedTimer t;
        t.start();
        return t;
    }();
    return double(clock.nsecsElapsed()) / 1e6;
}

// Longest gap between turns of the main loop, seen by a 1 ms timer.
class StallMeter {
public:
    StallMeter()
    {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(1);
        QObject::connect(&timer_, &QTimer::timeout, [this] { tick(); });
    }
    void start()
    {
        worst_ = 0;
        last_ = nowMs();
        timer_.start();
    }
    // A stall that the caller itself causes on the main thread counts too.
    double stop()
    {
        tick();
        timer_.stop();
        return worst_;
    }

private:
    void tick()
    {
        const double t = nowMs();
        worst_ = std::max(worst_, t - last_);
        last_ = t;
    }
    QTimer timer_;
    double last_ = 0;
    double worst_ = 0;
};

// Runs the main loop until `done` holds or `timeoutMs` passes; true if it held.
template <typename Pred>
bool spinUntil(Pred done, double timeoutMs)
{
    const double until = nowMs() + timeoutMs;
    while (!done()) {
        if (nowMs() > until)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

void spinFor(double ms)
{
    QEventLoop loop;
    QTimer::singleShot(int(ms), Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

struct Stats {
    std::vector<double> samples;
    void add(double v) { samples.push_back(v); }
    double pct(double p) const
    {
        if (samples.empty())
            return 0;
        std::vector<double> s = samples;
        std::sort(s.begin(), s.end());
        const std::size_t i = std::min(s.size() - 1, std::size_t(p * double(s.size() - 1) + 0.5));
        return s[i];
    }
    double max() const { return samples.empty() ? 0 : *std::max_element(samples.begin(), samples.end()); }
    double over(double limit) const
    {
        if (samples.empty())
            return 0;
        return 100.0 * double(std::count_if(samples.begin(), samples.end(), [&](double v) { return v > limit; }))
            / double(samples.size());
    }
    QString line() const
    {
        return QStringLiteral("median %1  p95 %2  max %3 ms  (n=%4, %5 % over 16.7 ms)")
            .arg(pct(0.5), 0, 'f', 2)
            .arg(pct(0.95), 0, 'f', 2)
            .arg(max(), 0, 'f', 1)
            .arg(samples.size())
            .arg(over(16.7), 0, 'f', 1);
    }
};

PlatformServices liveServices(FakePlatform& platform)
{
    PlatformServices services = platform.services();
    services.scheduler = std::make_shared<QtScheduler>();
    return services;
}

// The stage shows the operator's slide at full size and the output has it
// too: the same image, not the one before the press, not a thumbnail.
bool stageReady(const AppModel& model, const ImagePtr& before)
{
    const ImagePtr stage = model.previewSlideImage.peek();
    if (!stage || stage == before || model.incomingSlideImage.peek() != stage)
        return false;
    const QSizeF box = model.snapshotSize();
    return stage->width() >= int(box.width()) - 1 || stage->height() >= int(box.height()) - 1;
}

// One press timed from the call to a ready stage; -1 when it never got there.
template <typename Press>
double timePress(AppModel& model, Press press)
{
    const ImagePtr before = model.previewSlideImage.peek();
    const double t0 = nowMs();
    press();
    if (!spinUntil([&] { return stageReady(model, before); }, 20000))
        return -1;
    return nowMs() - t0;
}

void print(const QString& text)
{
    std::printf("%s\n", qPrintable(text));
    std::fflush(stdout);
}

bool thumbnailsDone(const AppModel& model)
{
    return int(model.thumbnails.peek().size()) >= model.pageCount.peek();
}

constexpr double pressGap = 350;  // ms between clicker presses, as on stage

void presses(const QString& deck)
{
    FakePlatform platform;
    AppModel model(liveServices(platform));
    StallMeter meter;

    meter.start();
    const double t0 = nowMs();
    model.replacePlaylist({deck});
    const double loadCall = nowMs() - t0;
    if (!model.document.peek()) {
        print(QStringLiteral("  cannot open"));
        return;
    }
    const bool finished = spinUntil([&] { return thumbnailsDone(model); }, 60000);
    const double stall = meter.stop();
    print(QStringLiteral("  load call %1 ms; thumbnail pass %2 ms, longest main-thread stall %3 ms%4")
              .arg(loadCall, 0, 'f', 1)
              .arg(nowMs() - t0, 0, 'f', 0)
              .arg(stall, 0, 'f', 1)
              .arg(finished ? QString() : QStringLiteral(" (pass did not finish)")));

    const int pages = model.pageCount.peek();
    const int steps = std::min(pages - 1, 20);
    Stats next, previous, jump, cue;
    for (int i = 0; i < steps; ++i) {
        spinFor(pressGap);
        next.add(timePress(model, [&] { model.goToNextSlide(); }));
    }
    for (int i = 0; i < steps; ++i) {
        spinFor(pressGap);
        previous.add(timePress(model, [&] { model.goToPreviousSlide(); }));
    }
    QRandomGenerator random(7);
    for (int i = 0; i < std::min(10, pages - 1); ++i) {
        int target = int(random.bounded(pages));
        if (target == model.pageIndex.peek())
            target = (target + 1) % pages;
        const QString digits = QString::number(target + 1);
        for (QChar c : digits) {
            spinFor(150);  // an operator types a digit about every 150 ms
            model.appendJumpDigit(QString(c));
        }
        spinFor(150);
        jump.add(timePress(model, [&] { model.commitJump(); }));
    }
    for (int i = 1; i < pages; i += std::max(1, pages / 6))
        model.addBookmark(QStringLiteral("cue %1").arg(i), i);
    model.goToPage(0);
    spinUntil([&] { return stageReady(model, nullptr); }, 20000);
    for (int i = 0; i < 8; ++i) {
        spinFor(pressGap);
        cue.add(timePress(model, [&] {
            if (i < 5)
                model.goToNextCue();
            else
                model.goToPreviousCue();
        }));
    }
    print(QStringLiteral("  next      %1").arg(next.line()));
    print(QStringLiteral("  previous  %1").arg(previous.line()));
    print(QStringLiteral("  jump      %1").arg(jump.line()));
    print(QStringLiteral("  cue       %1").arg(cue.line()));
}

// A press every 350 ms through all decks as one set, thumbnail passes running.
void pressesDuringPasses(const QStringList& decks)
{
    FakePlatform platform;
    AppModel model(liveServices(platform));
    model.replacePlaylist(decks);
    spinUntil([&] { return stageReady(model, nullptr); }, 20000);
    Stats press;
    StallMeter meter;
    meter.start();
    while (model.canGoNext()) {
        spinFor(pressGap);
        press.add(timePress(model, [&] { model.goToNextSlide(); }));
    }
    const double stall = meter.stop();
    print(QStringLiteral("  press     %1").arg(press.line()));
    print(QStringLiteral("  longest main-thread stall %1 ms").arg(stall, 0, 'f', 1));
}

long rssKb(const char* field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(int(qstrlen(field))).trimmed().split(' ').first().toLong();
    return 0;
}

// Child: the set paged through end to end, one press as soon as the last is shown.
int walkSet(const QStringList& files)
{
    FakePlatform platform;
    AppModel model(liveServices(platform));
    model.replacePlaylist(files);
    spinUntil([&] { return stageReady(model, nullptr); }, 20000);
    int presses = 0;
    const double t0 = nowMs();
    while (model.canGoNext()) {
        if (timePress(model, [&] { model.goToNextSlide(); }) < 0)
            break;
        ++presses;
    }
    print(QStringLiteral("  %1 files, %2 presses in %3 s; peak RSS %4 MB, RSS at the end %5 MB")
              .arg(model.playlist.peek().size())
              .arg(presses)
              .arg((nowMs() - t0) / 1000, 0, 'f', 1)
              .arg(rssKb("VmHWM:") / 1024)
              .arg(rssKb("VmRSS:") / 1024));
    return 0;
}

// Child: `changes` slide changes back and forth through the set; the slope
// is fitted over the samples after the first pass there and back.
int churn(const QStringList& files, int changes)
{
    FakePlatform platform;
    AppModel model(liveServices(platform));
    model.replacePlaylist(files);
    spinUntil([&] { return stageReady(model, nullptr); }, 20000);
    int total = 0;
    for (const auto& entry : model.playlist.peek())
        total += entry.pageCount;
    bool forward = true;
    std::vector<std::pair<double, double>> samples;  // change, MB
    const int every = std::max(50, changes / 40);
    const double t0 = nowMs();
    for (int i = 1; i <= changes; ++i) {
        if (forward && !model.canGoNext())
            forward = false;
        else if (!forward && !model.canGoPrevious())
            forward = true;
        const double ms = timePress(model, [&] { forward ? model.goToNextSlide() : model.goToPreviousSlide(); });
        if (ms < 0)
            break;
        if (i % every == 0 && i > 2 * total)
            samples.emplace_back(i, rssKb("VmRSS:") / 1024.0);
    }
    double slope = 0;
    if (samples.size() >= 2) {
        double mx = 0, my = 0;
        for (auto [x, y] : samples) {
            mx += x;
            my += y;
        }
        mx /= double(samples.size());
        my /= double(samples.size());
        double sxy = 0, sxx = 0;
        for (auto [x, y] : samples) {
            sxy += (x - mx) * (y - my);
            sxx += (x - mx) * (x - mx);
        }
        slope = sxx > 0 ? sxy / sxx * 1000 : 0;
    }
    print(QStringLiteral("  %1 changes through %2 pages in %3 s; RSS after first pass %4 MB, at the end %5 MB, "
                         "peak %6 MB; slope %7 MB per 1,000 changes")
              .arg(changes)
              .arg(total)
              .arg((nowMs() - t0) / 1000, 0, 'f', 1)
              .arg(samples.empty() ? 0 : samples.front().second, 0, 'f', 0)
              .arg(rssKb("VmRSS:") / 1024)
              .arg(rssKb("VmHWM:") / 1024)
              .arg(slope, 0, 'f', 2));
    return 0;
}

void coldRender(const QString& deck)
{
    MuPdfEngine engine;
    const double t0 = nowMs();
    auto opened = engine.open(deck);
    const double openMs = nowMs() - t0;
    auto* doc = std::get_if<PdfDocumentPtr>(&opened);
    if (!doc)
        return;
    print(QStringLiteral("  open %1 ms").arg(openMs, 0, 'f', 1));
    Stats ms;
    for (int i = 0; i < (*doc)->pageCount(); ++i) {
        const double t0 = nowMs();
        (void)(*doc)->render(i, QSize(1920, 1080));
        ms.add(nowMs() - t0);
    }
    const double sum = std::accumulate(ms.samples.begin(), ms.samples.end(), 0.0);
    print(QStringLiteral("  cold render 1920x1080: mean %1 ms, median %2 ms, p95 %3 ms per page, %4 s in all")
              .arg(sum / double(ms.samples.size()), 0, 'f', 1)
              .arg(ms.pct(0.5), 0, 'f', 1)
              .arg(ms.pct(0.95), 0, 'f', 1)
              .arg(sum / 1000, 0, 'f', 2));
}

int runChild(const QStringList& args)
{
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start(QCoreApplication::applicationFilePath(), args);
    child.waitForFinished(-1);
    return child.exitCode();
}

QStringList pdfsIn(const QString& folder)
{
    QStringList files;
    const QDir dir(folder);
    for (const QString& name : dir.entryList({QStringLiteral("*.pdf")}, QDir::Files, QDir::Name))
        files << dir.absoluteFilePath(name);
    return files;
}

}

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    int changes = 10000;
    QString setFolder;
    QString childMode;
    QStringList decks;
    for (int i = 0; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--changes") && i + 1 < args.size())
            changes = args[++i].toInt();
        else if (args[i] == QLatin1String("--set") && i + 1 < args.size())
            setFolder = args[++i];
        else if (args[i] == QLatin1String("--child-walk") || args[i] == QLatin1String("--child-churn"))
            childMode = args[i];
        else
            decks << QFileInfo(args[i]).absoluteFilePath();
    }
    if (childMode == QLatin1String("--child-walk"))
        return walkSet(decks);
    if (childMode == QLatin1String("--child-churn"))
        return churn(decks, changes);

    TestFolder generated;
    if (decks.isEmpty()) {
        decks << generated.pdf(QStringLiteral("generated.pdf"), 30);
        if (setFolder.isEmpty()) {
            QDir(generated.path()).mkpath(QStringLiteral("set"));
            for (int i = 0; i < 50; ++i)
                generated.pdf(QStringLiteral("set/%1.pdf").arg(i, 2, 10, QLatin1Char('0')), 30);
            setFolder = generated.file(QStringLiteral("set"));
        }
    }

    for (const QString& deck : decks) {
        print(QStringLiteral("== %1").arg(QFileInfo(deck).fileName()));
        coldRender(deck);
        presses(deck);
    }
    print(QStringLiteral("== all decks as one set, a press every 350 ms"));
    pressesDuringPasses(decks);
    if (!setFolder.isEmpty()) {
        print(QStringLiteral("== %1 paged through").arg(setFolder));
        runChild(QStringList{QStringLiteral("--child-walk")} + pdfsIn(setFolder));
    }
    print(QStringLiteral("== slide changes through all decks as one set"));
    runChild(QStringList{QStringLiteral("--child-churn"), QStringLiteral("--changes"), QString::number(changes)}
             + decks);
    return 0;
}
