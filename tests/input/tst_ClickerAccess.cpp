#include "input/ClickerAccessDialog.h"
#include "input/ClickerAccessRule.h"
#include "input/ClickerMonitor.h"
#include "platform/InputSource.h"
#include "support/FakeInputSource.h"
#include "support/FakePlatform.h"
#include "model/AppModel.h"

#include <QListWidget>
#include <QPushButton>
#include <QtTest>

// Whether presses are heard while another program has the focus, the
// devices the operator can leave out, and the rule that grants access.
class ClickerAccessTest : public QObject {
    Q_OBJECT

    // A model whose clicker has a fake tap and a fake global source.
    struct Session {
        FakePlatform platform;
        FakeInputSource* tap = nullptr;
        FakeInputSource* global = nullptr;
        std::unique_ptr<AppModel> model;

        Session()
        {
            PlatformServices services = platform.services();
            services.makeClickerMonitor = [this] {
                return std::make_unique<ClickerMonitor>(ClickerMonitor::Sources{
                    .local = {},
                    .global = [this] { auto s = std::make_unique<FakeInputSource>(); global = s.get(); return s; },
                    .tap = [this] { auto s = std::make_unique<FakeInputSource>(); tap = s.get(); return s; },
                });
            };
            model = std::make_unique<AppModel>(services);
        }
    };

private slots:
    void trustFollowsWhatTheSourcesHear()
    {
        Session s;
        s.model->start();
        QVERIFY(s.tap && s.global);
        QVERIFY(!s.model->clickerTrusted());
        // A remote made readable: the next check sees it, and looked again.
        s.tap->hearing = true;
        const int before = s.tap->refreshes;
        s.model->refreshClickerTrust();
        QVERIFY(s.model->clickerTrusted());
        QCOMPARE(s.tap->refreshes, before + 1);
        // Unplugged: the device list's change updates the trust at once.
        s.tap->hearing = false;
        emit s.tap->devicesChanged();
        QVERIFY(!s.model->clickerTrusted());
        // The X11 session alone is enough.
        s.global->hearing = true;
        s.model->refreshClickerTrust();
        QVERIFY(s.model->clickerTrusted());
    }

    void devicesHeardAreListedOnceWithTheOperatorsChoice()
    {
        Session s;
        s.model->setClickerDeviceIgnored("046d:c534:Office Keyboard", true);
        s.model->start();
        s.tap->list = {{"046d:c534:Office Keyboard", "Office Keyboard", false}, {"046d:c53e:Spotlight", "Spotlight", false}};
        // The same keyboard seen through the X server as well.
        s.global->list = {{"046d:c534:Office Keyboard", "Office Keyboard", false}, {"0001:0002:Laptop Keys", "Laptop Keys", false}};
        emit s.tap->devicesChanged();
        QStringList listed;
        for (const ClickerDevice& d : s.model->clickerDevices())
            listed << d.name + (d.ignored ? " (ignored)" : "");
        QCOMPARE(listed, (QStringList{"Office Keyboard (ignored)", "Laptop Keys", "Spotlight"}));
    }

    void noMonitorNoTrust()
    {
        FakePlatform platform;
        AppModel model(platform.services());
        model.start();
        model.refreshClickerTrust();
        QVERIFY(!model.clickerTrusted());
    }

    void ruleGrantsTheChosenRemotes()
    {
        const QString rule = ClickerAccessRule::text({{0x046d, 0xc53e, "Spotlight"}, {0x1915, 0x1025, "2.4G\nPresenter"},
                                                      {0x046d, 0xc53e, "Spotlight again"}});
        const QStringList lines = rule.split('\n', Qt::SkipEmptyParts);
        QStringList matches;
        for (const QString& line : lines) {
            if (!line.startsWith('#'))
                matches << line;
        }
        QCOMPARE(matches,
                 (QStringList{
                     R"(SUBSYSTEM=="input", KERNEL=="event*", ATTRS{id/vendor}=="046d", ATTRS{id/product}=="c53e", TAG+="uaccess")",
                     R"(SUBSYSTEM=="input", KERNEL=="event*", ATTRS{id/vendor}=="1915", ATTRS{id/product}=="1025", TAG+="uaccess")"}));
        // A device's name cannot end the comment line and start a rule.
        QVERIFY(lines.contains("# 2.4G Presenter"));

        // The rule file reaches the root shell as an argument, never as script text.
        const QStringList command = ClickerAccessRule::installCommand("/tmp/x\"; rm -rf /; \".rules");
        QCOMPARE(command.last(), "/tmp/x\"; rm -rf /; \".rules");
        QVERIFY(!command[2].contains("rm -rf"));
        QVERIFY(command[2].contains(ClickerAccessRule::installedPath));
    }

    void dialogOffersOnlyLockedRemotes()
    {
        InputDeviceInfo readable{"/dev/input/event3", "Spotlight", 0x046d, 0xc53e, true, true};
        InputDeviceInfo remote{"/dev/input/event5", "2.4G Presenter", 0x1915, 0x1025, false, true};
        InputDeviceInfo keyboard{"/dev/input/event6", "Office Keyboard", 0x046d, 0xc534, false, false};
        InputDeviceInfo xOnly{"", "Virtual keys", 0, 0, true, false};
        ClickerAccessDialog dialog({readable, remote, keyboard, xOnly}, false);
        auto* list = dialog.findChild<QListWidget*>();
        QCOMPARE(list->count(), 3);
        QCOMPARE(list->item(0)->flags() & Qt::ItemIsUserCheckable, Qt::ItemFlags());
        QCOMPARE(list->item(1)->checkState(), Qt::Checked);    // looks like a remote
        QCOMPARE(list->item(2)->checkState(), Qt::Unchecked);  // the operator's keyboard
        QPushButton* install = nullptr;
        for (auto* b : dialog.findChildren<QPushButton*>())
            if (b->text() == "Allow Chosen Remotes")
                install = b;
        QVERIFY(install && install->isEnabled());

        ClickerAccessDialog nothingLocked({readable}, true);
        for (auto* b : nothingLocked.findChildren<QPushButton*>())
            if (b->text() == "Allow Chosen Remotes")
                QVERIFY(!b->isEnabled());
    }
};

QTEST_MAIN(ClickerAccessTest)
#include "tst_ClickerAccess.moc"
