#include "platform/EvdevDecoder.h"
#include "platform/EvdevInputSource.h"
#include "support/ClickerSession.h"

#include <QtTest>

#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

// Presses read from input devices: the decoder on raw kernel records, and the
// reader thread on pipes that stand in for device nodes.
class EvdevInputSourceTest : public QObject {
    Q_OBJECT

    static QByteArray record(uint16_t type, uint16_t code, int32_t value)
    {
        input_event ev{};
        ev.type = type;
        ev.code = code;
        ev.value = value;
        return QByteArray(reinterpret_cast<const char*>(&ev), sizeof ev);
    }
    // One key event followed by its report, as a device sends it.
    static QByteArray key(uint16_t code, int32_t value) { return record(EV_KEY, code, value) + record(EV_SYN, SYN_REPORT, 0); }
    static QByteArray click(uint16_t code) { return key(code, 1) + key(code, 0); }

    // Each snapshot in one line.
    static QStringList described(const std::vector<EventSnapshot>& snapshots)
    {
        QStringList out;
        for (const EventSnapshot& s : snapshots) {
            QString line = s.mouseButton >= 0 ? QStringLiteral("button %1").arg(s.mouseButton)
                : s.isMediaNext                ? QStringLiteral("media next")
                : s.isMediaPrevious            ? QStringLiteral("media previous")
                                               : QStringLiteral("key %1 '%2'").arg(s.keyCode).arg(s.chars);
            if (s.isRepeat)
                line += QStringLiteral(" repeat");
            if (s.flags)
                line += QStringLiteral(" flags %1").arg(s.flags, 0, 16);
            out << line;
        }
        return out;
    }

    // A monitor whose tap reads pipes the test writes into; another program
    // has the focus.
    struct Tap : ClickerSession {
        EvdevInputSource* source = nullptr;
        std::vector<int> writers;

        Tap()
            : ClickerSession({.local = {}, .global = {}, .tap = [this] {
                                  auto made = std::make_unique<EvdevInputSource>(EvdevInputSource::Options{false});
                                  source = made.get();
                                  return made;
                              }})
        {
            model.replacePlaylist({pdf("ten.pdf", 10)});
            focusElsewhere();
            monitor.start(model);
        }
        ~Tap()
        {
            monitor.stop();
            for (int fd : writers)
                if (fd >= 0)
                    ::close(fd);
        }
        // A new device; returns its index.
        int plug(const QString& name, bool presenter = true)
        {
            int fds[2];
            if (::pipe(fds) != 0)
                return -1;
            InputDeviceInfo info;
            info.node = QStringLiteral("/dev/input/event%1").arg(90 + writers.size());
            info.name = name;
            info.vendor = 0x1915;
            info.product = uint16_t(writers.size());
            info.readable = true;
            info.presenter = presenter;
            source->attach(fds[0], info);
            readers.push_back(fds[0]);
            writers.push_back(fds[1]);
            return int(writers.size()) - 1;
        }
        void send(int device, const QByteArray& bytes) { QCOMPARE(::write(writers[device], bytes.data(), bytes.size()), bytes.size()); }
        // The reader has taken everything written to the device.
        bool drained(int device) const
        {
            int waiting = -1;
            return ::ioctl(readers[device], FIONREAD, &waiting) == 0 && waiting == 0;
        }
        QStringList deviceNames() const
        {
            QStringList out;
            for (const ClickerDevice& d : model.clickerDevices())
                out << d.name + (d.ignored ? QStringLiteral(" (ignored)") : QString());
            return out;
        }
        std::vector<int> readers;
    };

private slots:
    void decoderReadsKernelRecords()
    {
        EvdevDecoder decoder([](uint16_t code) { return code == KEY_B ? QStringLiteral("b") : QString(); });
        QByteArray bytes = click(KEY_PAGEDOWN) + record(EV_MSC, MSC_SCAN, 0x7004e) + click(KEY_B)
            // Held: the kernel's repeats are marked as such.
            + key(KEY_RIGHT, 1) + key(KEY_RIGHT, 2) + key(KEY_RIGHT, 2) + key(KEY_RIGHT, 0)
            // Modifiers held on the device are the snapshot's flags.
            + key(KEY_LEFTMETA, 1) + click(KEY_RIGHT) + key(KEY_LEFTMETA, 0) + key(KEY_RIGHTCTRL, 1) + key(KEY_LEFTSHIFT, 1)
            + click(KEY_B) + key(KEY_RIGHTCTRL, 0) + key(KEY_LEFTSHIFT, 0) + click(KEY_LEFT)
            // Media keys and buttons; the main buttons are not for the presenter.
            + click(KEY_NEXTSONG) + click(KEY_REWIND) + click(BTN_LEFT) + click(BTN_MIDDLE) + click(BTN_SIDE)
            + click(BTN_EXTRA) + click(BTN_FORWARD) + click(BTN_BACK);
        // Fed in uneven pieces, records split across reads.
        std::vector<EventSnapshot> got;
        for (qsizetype at = 0; at < bytes.size(); at += 17) {
            auto part = decoder.feed(bytes.constData() + at, std::size_t(std::min<qsizetype>(17, bytes.size() - at)));
            got.insert(got.end(), part.begin(), part.end());
        }
        QCOMPARE(described(got), (QStringList{
                                     QStringLiteral("key %1 ''").arg(KEY_PAGEDOWN),
                                     QStringLiteral("key %1 'b'").arg(KEY_B),
                                     QStringLiteral("key %1 ''").arg(KEY_RIGHT),
                                     QStringLiteral("key %1 '' repeat").arg(KEY_RIGHT),
                                     QStringLiteral("key %1 '' repeat").arg(KEY_RIGHT),
                                     QStringLiteral("key %1 '' flags 100000").arg(KEY_RIGHT),
                                     QStringLiteral("key %1 'b' flags 60000").arg(KEY_B),
                                     QStringLiteral("key %1 ''").arg(KEY_LEFT),
                                     "media next", "media previous", "button 2", "button 3", "button 4",
                                     "button 5", "button 6",
                                 }));
    }

    void decoderSkipsWhatFollowsDroppedEvents()
    {
        EvdevDecoder decoder;
        const QByteArray bytes = key(KEY_LEFTCTRL, 1) + record(EV_SYN, SYN_DROPPED, 0) + record(EV_KEY, KEY_UP, 1)
            + record(EV_SYN, SYN_REPORT, 0) + click(KEY_DOWN);
        // The control key's release was lost with the dropped events: it is not held any more.
        QCOMPARE(described(decoder.feed(bytes.constData(), std::size_t(bytes.size()))),
                 QStringList{QStringLiteral("key %1 ''").arg(KEY_DOWN)});
    }

    void pressesReachTheModelOnceEvenWhenSplit()
    {
        Tap s;
        const int remote = s.plug("Presenter Remote");
        const QByteArray press = click(KEY_PAGEDOWN);
        s.send(remote, press.left(10));
        QTRY_VERIFY(s.drained(remote));
        s.send(remote, press.mid(10));
        QTRY_COMPARE(s.model.pageIndex(), 1);
        // A held key: its repeats do nothing, the next key acts once.
        s.send(remote, key(KEY_RIGHT, 1) + key(KEY_RIGHT, 2) + key(KEY_RIGHT, 2) + key(KEY_RIGHT, 0) + click(KEY_B));
        QTRY_VERIFY(s.model.isBlackout());
        QCOMPARE(s.model.pageIndex(), 2);
        // Command held on the remote: nothing.
        s.send(remote, key(KEY_LEFTMETA, 1) + click(KEY_RIGHT) + key(KEY_LEFTMETA, 0) + click(KEY_B));
        QTRY_VERIFY(!s.model.isBlackout());
        QCOMPARE(s.model.pageIndex(), 2);
        // With our window in front, the in-program source answers instead.
        s.focus = {true, true, false};
        const int before = s.heard;
        s.send(remote, click(KEY_PAGEDOWN));
        QTRY_VERIFY(s.heard > before);
        s.focusElsewhere();
        s.send(remote, click(KEY_B));
        QTRY_VERIFY(s.model.isBlackout());
        QCOMPARE(s.model.pageIndex(), 2);
    }

    void devicesComeAndGo()
    {
        Tap s;
        QVERIFY(!s.source->hearsOutside());
        const int keyboard = s.plug("Media Keyboard", false);
        QVERIFY(!s.source->hearsOutside());
        const int remote = s.plug("Presenter Remote");
        QVERIFY(s.source->hearsOutside());
        QTRY_COMPARE(s.deviceNames(), (QStringList{"Media Keyboard", "Presenter Remote"}));
        s.send(keyboard, click(KEY_NEXTSONG));
        QTRY_COMPARE(s.model.pageIndex(), 1);

        // Removed: closed and no longer listed.
        s.source->detach(QStringLiteral("/dev/input/event91"));
        QTRY_COMPARE(s.deviceNames(), QStringList{"Media Keyboard"});
        QVERIFY(!s.source->hearsOutside());
        // A device whose node ends is closed as well.
        ::close(s.writers[keyboard]);
        s.writers[keyboard] = -1;
        QTRY_COMPARE(s.deviceNames(), QStringList());
        Q_UNUSED(remote);

        // Plugged in during the show: works at once.
        const int late = s.plug("Late Remote");
        QTRY_COMPARE(s.deviceNames(), QStringList{"Late Remote"});
        s.send(late, click(BTN_EXTRA));
        QTRY_COMPARE(s.model.pageIndex(), 2);
    }

    void ignoredDevicesAreNotHeard()
    {
        Tap s;
        const int keyboard = s.plug("Office Keyboard");
        const int remote = s.plug("Presenter Remote");
        QTRY_COMPARE(s.model.clickerDevices().size(), std::size_t(2));
        s.model.setClickerDeviceIgnored(s.model.clickerDevices()[0].id, true);
        QCOMPARE(s.deviceNames(), (QStringList{"Office Keyboard (ignored)", "Presenter Remote"}));
        const int before = s.heard;
        s.send(keyboard, click(KEY_PAGEDOWN));
        QTRY_VERIFY(s.heard > before);
        s.send(remote, click(KEY_B));
        QTRY_VERIFY(s.model.isBlackout());
        QCOMPARE(s.model.pageIndex(), 0);
    }
};

QTEST_MAIN(EvdevInputSourceTest)
#include "tst_EvdevInputSource.moc"
