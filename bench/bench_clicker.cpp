// How long a presenter-remote press takes from the device to the model: a
// kernel input record written into the evdev reader's descriptor, decoded on
// the reader thread, queued to the main thread, answered by the clicker
// monitor, until goToNextSlide (or goToPreviousSlide) moves the page.
// Prints the median and 99th percentile over 1,000 presses.
#include "input/ClickerMonitor.h"
#include "model/AppModel.h"
#include "platform/EvdevInputSource.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"

#include <QGuiApplication>

#include <linux/input.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

QByteArray click(uint16_t code)
{
    QByteArray out;
    for (int value : {1, 0}) {
        input_event ev[2]{};
        ev[0].type = EV_KEY;
        ev[0].code = code;
        ev[0].value = value;
        ev[1].type = EV_SYN;
        ev[1].code = SYN_REPORT;
        out.append(reinterpret_cast<const char*>(ev), sizeof ev);
    }
    return out;
}

}  // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    TestFolder folder;
    FakePlatform platform;
    AppModel model(platform.services());
    model.replacePlaylist({folder.pdf("deck.pdf", 2)});

    EvdevInputSource* tap = nullptr;
    ClickerMonitor monitor({.local = {}, .global = {}, .tap = [&] {
                                auto made = std::make_unique<EvdevInputSource>(EvdevInputSource::Options{false});
                                tap = made.get();
                                return made;
                            }});
    // Another program has the focus, as during a show.
    monitor.setFocusProbe([] { return ClickerMonitor::Focus{}; });
    monitor.start(model);
    int fds[2];
    if (::pipe(fds) != 0)
        return 1;
    InputDeviceInfo remote;
    remote.node = QStringLiteral("/dev/input/event99");
    remote.name = QStringLiteral("Presenter Remote");
    remote.readable = remote.presenter = true;
    tap->attach(fds[0], remote);

    const QByteArray next = click(KEY_PAGEDOWN), previous = click(KEY_PAGEUP);
    using Clock = std::chrono::steady_clock;
    std::vector<double> ms;
    constexpr int presses = 1000;
    for (int i = 0; i < presses + 20; ++i) {
        bool moved = false;
        Clock::time_point end;
        auto tracker = obs::withTracking([&] { (void)model.pageIndex(); }, [&] {
            end = Clock::now();
            moved = true;
        });
        const QByteArray& bytes = model.pageIndex() == 0 ? next : previous;
        const auto start = Clock::now();
        if (::write(fds[1], bytes.constData(), size_t(bytes.size())) != bytes.size())
            return 1;
        const auto deadline = start + std::chrono::seconds(10);
        while (!moved && Clock::now() < deadline)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
        if (!moved) {
            std::fprintf(stderr, "press %d did not move the slide\n", i);
            return 1;
        }
        // Let the move finish (slide render, fade start) before the next press.
        QCoreApplication::processEvents();
        if (i >= 20)  // the first presses warm caches and the thread
            ms.push_back(std::chrono::duration<double, std::milli>(end - start).count());
    }
    std::sort(ms.begin(), ms.end());
    const auto at = [&](double q) { return ms[std::min(ms.size() - 1, std::size_t(q * double(ms.size())))]; };
    std::printf("clicker press to slide move (evdev reader, %d presses): median %.3f ms, p99 %.3f ms, max %.3f ms\n",
                presses, at(0.5), at(0.99), ms.back());
    monitor.stop();
    ::close(fds[1]);
    return 0;
}
