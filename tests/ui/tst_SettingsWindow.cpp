#include "l10n/L10n.h"
#include "support/ShownMainWindow.h"
#include "ui/settings/AboutWindow.h"
#include "ui/settings/AppInfo.h"
#include "ui/settings/SettingsWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QToolButton>
#include <QtTest>

namespace {

// The settings window over a model on fake platform services, with a laptop
// (the main screen) and a projector connected.
struct OpenSettings : ModelOnFakes {
    SettingsWindow window{model};

    OpenSettings()
    {
        platform.screens->list = {PlatformScreen{1, "Laptop", QRectF(0, 0, 1440, 900), 2},
                                  PlatformScreen{2, "Projector", QRectF(1440, 0, 1920, 1080), 1}};
        platform.screens->mainId = 1;
        model.start();
        window.show();
        // The panes' updates, queued by the start and the showing, run now.
        QCoreApplication::sendPostedEvents();
    }
    template <typename T = QWidget>
    T* find(const QString& name) const
    {
        T* child = window.findChild<T*>(name);
        if (!child)
            qWarning("no %s named %s", T::staticMetaObject.className(), qPrintable(name));
        return child;
    }
    QTabWidget* tabs() const { return window.findChild<QTabWidget*>(); }
    void openTab(int index) { tabs()->setCurrentIndex(index); }
    QVariant stored(const char* key) const { return platform.preferences->values.value(QString::fromLatin1(key)); }
    // Whether a control is on screen inside its pane.
    bool shown(QWidget* widget) const { return widget && widget->isVisibleTo(&window); }
};

// Picks an entry of a closed combo box the way the keyboard does, one step
// at a time, each step a choice of the operator.
bool chooseByKeys(QComboBox* box, const QString& text)
{
    const int target = box->findText(text);
    if (target < 0)
        return false;
    while (box->currentIndex() < target)
        QTest::keyClick(box, Qt::Key_Down);
    while (box->currentIndex() > target)
        QTest::keyClick(box, Qt::Key_Up);
    return box->currentIndex() == target;
}

QStringList tabTitles(const QTabWidget* tabs)
{
    QStringList titles;
    for (int i = 0; i < tabs->count(); ++i)
        titles << tabs->tabText(i);
    return titles;
}

}

// Records the addresses the program asks the desktop to open.
class UrlCatcher : public QObject {
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl& url) { opened << url; }
};

class SettingsWindowTest : public QObject {
    Q_OBJECT

private slots:
    void fixedWindowWithFiveTabsInOrder()
    {
        OpenSettings s;
        QCOMPARE(s.window.size(), QSize(520, 580));
        QCOMPARE(s.window.minimumSize(), s.window.maximumSize());
        QCOMPARE(tabTitles(s.tabs()), (QStringList{"Interface", "Output", "Show", "Clicker", "About"}));
        QCOMPARE(s.window.windowTitle(), QStringLiteral("Settings"));
    }

    // The language picker lists every language in its own name, whatever the
    // interface speaks; German relabels this window and the console at once.
    void germanRelabelsTheSettingsAndTheConsole()
    {
        OpenSettings s;
        ConsoleWindow console(s.model);
        new AppCommands(s.model, console);  // owned by the console
        console.show();
        auto* picker = s.find<QComboBox>("languagePicker");
        QVERIFY(picker);
        QStringList names;
        for (int i = 0; i < picker->count(); ++i)
            names << picker->itemText(i);
        QCOMPARE(names, (QStringList{"Русский", "English", "中文", "Deutsch"}));
        QVERIFY(childWithText<QLabel>(s.window, "Interface language"));
        QVERIFY(childWithText(console, "Open PDF…"));

        QVERIFY(chooseByKeys(picker, "Deutsch"));
        QCOMPARE(s.model.interfaceLanguage(), AppLanguage::german);
        QCOMPARE(s.stored("interfaceLanguage").toString(), QStringLiteral("de"));
        QTRY_COMPARE_WITH_TIMEOUT(tabTitles(s.tabs()),
                                  (QStringList{"Oberfläche", "Ausgabe", "Show", "Klicker", "Über"}), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(childWithText<QLabel>(s.window, "Sprache der Oberfläche"), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(childWithText(console, "PDF öffnen…"), 10000);
        QCOMPARE(s.window.windowTitle(), QStringLiteral("Einstellungen"));
        // The names in the picker stay as they were.
        QCOMPARE(picker->itemText(0), QStringLiteral("Русский"));
        // Sizes take the language's digit grouping.
        QCOMPARE(s.find<QSpinBox>("customWidth")->text(), QStringLiteral("1.920"));
    }

    void displayPickerShowsThePreferredDisplayAndPersistsAChoice()
    {
        OpenSettings s;
        auto* picker = s.find<QComboBox>("displayPicker");
        QVERIFY(picker);
        QCOMPARE(picker->count(), 2);
        // Nothing chosen yet: the projector, not the main screen, is shown.
        QCOMPARE(picker->currentText(), QStringLiteral("Projector · 1920×1080"));
        QVERIFY(!s.stored("selectedDisplayID").isValid());

        QVERIFY(chooseByKeys(picker, "Laptop · 1440×900"));
        QCOMPARE(s.model.selectedDisplayID(), std::optional<uint32_t>(1));
        QCOMPARE(s.stored("selectedDisplayID").toUInt(), 1u);

        // Showing the window again reads the displays afresh.
        s.window.hide();
        s.platform.screens->list.push_back(PlatformScreen{3, "Wall", QRectF(3360, 0, 3840, 2160), 1});
        s.window.show();
        QTRY_COMPARE_WITH_TIMEOUT(picker->count(), 3, 10000);
        QCOMPARE(picker->currentText(), QStringLiteral("Laptop · 1440×900"));
    }

    // The custom size fields appear with the custom aspect, take only whole
    // numbers within their limits, and store what Enter confirms.
    void customSizesRejectNonNumbersAndKeepTheirLimits_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("frame");
        QTest::newRow("letters") << "abc" << 1920 << "1920 × 1080";
        QTest::newRow("sign and point") << "-12.5" << 125 << "124 × 1080";
        QTest::newRow("zero") << "0" << 1920 << "1920 × 1080";
        QTest::newRow("above the largest") << "99999" << 9999 << "2560 × 276";
        QTest::newRow("a size") << "1281" << 1281 << "1280 × 1080";
    }
    void customSizesRejectNonNumbersAndKeepTheirLimits()
    {
        QFETCH(QString, typed);
        QFETCH(int, width);
        QFETCH(QString, frame);
        OpenSettings s;
        s.openTab(1);
        auto* field = s.find<QSpinBox>("customWidth");
        QVERIFY(field);
        QVERIFY(!s.shown(field));
        QVERIFY(chooseByKeys(s.find<QComboBox>("aspectPicker"), "Custom size"));
        QCOMPARE(s.model.aspect(), AspectMode::custom);
        QTRY_VERIFY_WITH_TIMEOUT(s.shown(field), 10000);
        QVERIFY(s.shown(s.find<QSpinBox>("customHeight")));

        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, typed);
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(field->value(), width);
        QCOMPARE(s.model.customWidth(), width);
        QCOMPARE(s.model.customHeight(), 1080);
        QVERIFY(field->value() >= field->minimum() && field->maximum() <= 16384);
        if (width != 1920)
            QCOMPARE(s.stored("customWidth").toInt(), width);
        // The published frame follows the size the operator set.
        QTRY_COMPARE_WITH_TIMEOUT(s.find<QLabel>("frameSize")->text(), frame, 10000);
    }

    // Each output toggle sets its property and persists it (showing the
    // output is not a preference: two displays show it at every start).
    void outputTogglesPersist_data()
    {
        QTest::addColumn<QString>("toggle");
        QTest::addColumn<QString>("key");
        QTest::newRow("show output") << "showOutput" << "";
        QTest::newRow("always on top") << "outputOnTop" << "outputAlwaysOnTop";
        QTest::newRow("hide cursor") << "hideOutputCursor" << "hideOutputCursor";
        QTest::newRow("publish") << "publishSource" << "isSyphonEnabled";
    }
    void outputTogglesPersist()
    {
        QFETCH(QString, toggle);
        QFETCH(QString, key);
        OpenSettings s;
        s.openTab(1);
        auto* box = s.find<QCheckBox>(toggle);
        QVERIFY(box);
        QVERIFY(box->isChecked());
        const auto state = [&] {
            return key.isEmpty() ? s.model.isOutputVisible() : s.platform.preferences->values.value(key).toBool();
        };
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
        QCOMPARE(state(), false);
        QTRY_VERIFY_WITH_TIMEOUT(!box->isChecked(), 10000);
        QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
        QCOMPARE(state(), true);
    }

    void durationSliderOnlyForDissolve()
    {
        OpenSettings s;
        s.openTab(2);
        s.model.transitionDuration.set(0.8);
        auto* style = s.find<QComboBox>("transitionPicker");
        auto* slider = s.find<QSlider>("fadeDuration");
        auto* now = s.find<QLabel>("fadeNow");
        QVERIFY(style && slider && now);
        QTRY_COMPARE_WITH_TIMEOUT(now->text(), QStringLiteral("0.80 s"), 10000);
        QVERIFY(s.shown(slider));

        QVERIFY(chooseByKeys(style, "None"));
        QCOMPARE(s.model.transitionStyle(), TransitionStyle::none);
        QCOMPARE(s.stored("transitionStyle").toString(), QStringLiteral("none"));
        QTRY_VERIFY_WITH_TIMEOUT(!s.shown(slider), 10000);
        QVERIFY(!s.shown(now));

        QVERIFY(chooseByKeys(style, "Dissolve"));
        QTRY_VERIFY_WITH_TIMEOUT(s.shown(slider), 10000);
        QCOMPARE(now->text(), QStringLiteral("0.80 s"));
        QCOMPARE(s.model.transitionDuration(), 0.8);  // showing it changes nothing
        QVERIFY(childWithText<QLabel>(s.window, "0.1") && childWithText<QLabel>(s.window, "1.2"));

        // The ends of the slider, and one step up from the shortest.
        QTest::keyClick(slider, Qt::Key_Home);
        QCOMPARE(s.model.transitionDuration(), 0.12);
        QCOMPARE(s.stored("transitionDuration").toDouble(), 0.12);
        QTest::keyClick(slider, Qt::Key_Right);
        QVERIFY(qFuzzyCompare(s.model.transitionDuration(), 0.17));
        QTest::keyClick(slider, Qt::Key_End);
        QCOMPARE(s.model.transitionDuration(), 1.2);
        QTRY_COMPARE_WITH_TIMEOUT(now->text(), QStringLiteral("1.20 s"), 10000);
    }

    void planStepsByFiveMinutesWithinItsRange()
    {
        OpenSettings s;
        s.openTab(2);
        auto* plan = s.find<QLabel>("planText");
        auto* more = s.find<QToolButton>("planMore");
        auto* less = s.find<QToolButton>("planLess");
        QVERIFY(plan && more && less);
        QCOMPARE(plan->text(), QStringLiteral("No planned duration"));
        QVERIFY(!less->isEnabled());

        QTest::mouseClick(more, Qt::LeftButton);
        QCOMPARE(s.model.plannedDuration(), 300.0);
        QCOMPARE(s.stored("plannedDuration").toDouble(), 300.0);
        QTRY_COMPARE_WITH_TIMEOUT(plan->text(), QStringLiteral("Plan: 5 min"), 10000);
        QTest::mouseClick(less, Qt::LeftButton);
        QCOMPARE(s.model.plannedDuration(), 0.0);
        QTRY_COMPARE_WITH_TIMEOUT(plan->text(), QStringLiteral("No planned duration"), 10000);

        // A plan from a show file between the steps, and the top of the range.
        s.model.plannedDuration.set(177 * 60 + 30);
        QTRY_COMPARE_WITH_TIMEOUT(plan->text(), QStringLiteral("Plan: 177 min"), 10000);
        QTest::mouseClick(more, Qt::LeftButton);
        QCOMPARE(s.model.plannedDuration(), 180 * 60.0);
        QTRY_VERIFY_WITH_TIMEOUT(!more->isEnabled(), 10000);
    }

    void trustChangeShowsWithinAPollPeriod()
    {
        OpenSettings s;
        s.openTab(3);
        auto* status = s.find<QLabel>("trustStatus");
        QVERIFY(status);
        QCOMPARE(status->text(), QStringLiteral("Access needed"));
        // What the 1.5 s poll finds once access is granted.
        s.model.clickerTrusted.set(true);
        QTRY_COMPARE_WITH_TIMEOUT(status->text(), QStringLiteral("Allowed"), 1500);
        s.model.clickerTrusted.set(false);
        QTRY_COMPARE_WITH_TIMEOUT(status->text(), QStringLiteral("Access needed"), 1500);
    }

    void keyCardListsTheKeys()
    {
        OpenSettings s;
        for (const char* keys : {"→  ↓  Page Down  Space  Enter", "←  ↑  Page Up  Delete", "12 then Enter",
                                 "B  .  Escape", "L  M  R  Z", "[  ]   ⌘B — new"})
            QVERIFY2(childWithText<QLabel>(s.window, QString::fromUtf8(keys)), keys);
    }

    // Each device heard has a tick; unticking ignores it for good, and a
    // device that arrives later leaves the choices made standing.
    void untickingADeviceIgnoresIt()
    {
        OpenSettings s;
        s.openTab(3);
        const auto box = [&](const QString& name) { return childWithText<QCheckBox>(s.window, name); };
        QVERIFY(childWithText<QLabel>(s.window, L10n::t("clicker.devices_none"))->isVisible());
        s.model.clickerDevices.set({{"usb:1d57:ad03", "Presenter remote", false}, {"usb:046d:c31c", "Keyboard", false}});
        QTRY_VERIFY_WITH_TIMEOUT(box("Keyboard"), 10000);
        QVERIFY(box("Presenter remote")->isChecked() && box("Keyboard")->isChecked());

        QTest::mouseClick(box("Keyboard"), Qt::LeftButton, {}, QPoint(8, box("Keyboard")->height() / 2));
        QVERIFY(s.model.isClickerDeviceIgnored("usb:046d:c31c"));
        QVERIFY(!s.model.isClickerDeviceIgnored("usb:1d57:ad03"));
        QCOMPARE(s.stored("clickerIgnoredDevices").toStringList(), QStringList{"usb:046d:c31c"});
        QTRY_VERIFY_WITH_TIMEOUT(!box("Keyboard")->isChecked(), 10000);

        s.model.clickerDevices.mutate([](auto& list) { list.push_back({"bt:aa", "Phone", false}); });
        QTRY_VERIFY_WITH_TIMEOUT(box("Phone"), 10000);
        QVERIFY(!box("Keyboard")->isChecked());
        QVERIFY(box("Presenter remote")->isChecked());
        QVERIFY(!childWithText<QLabel>(s.window, L10n::t("clicker.devices_none"))->isVisible());
    }

    void aboutPaneClearsRecentsAndOpensTheSite()
    {
        OpenSettings s;
        s.platform.recents->items = {"/shows/a.pdf"};
        s.model.recentFiles.set(s.platform.recents->items);
        s.openTab(4);
        QCOMPARE(s.find<QLabel>("version")->text(), "Version " + AppInfo::version());
        QVERIFY(childWithText<QLabel>(s.window, AppInfo::websiteHost()));
        auto* clear = s.find<QPushButton>("clearRecents");
        QTRY_VERIFY_WITH_TIMEOUT(clear->isEnabled(), 10000);
        QTest::mouseClick(clear, Qt::LeftButton);
        QVERIFY(s.model.recentFiles().isEmpty());
        QVERIFY(s.platform.recents->items.isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(!clear->isEnabled(), 10000);

        UrlCatcher catcher;
        QDesktopServices::setUrlHandler(AppInfo::website().scheme(), &catcher, "open");
        QTest::mouseClick(s.find<QPushButton>("openSite"), Qt::LeftButton);
        QDesktopServices::unsetUrlHandler(AppInfo::website().scheme());
        QCOMPARE(catcher.opened, QList<QUrl>{AppInfo::website()});
    }

    void aboutWindowFollowsTheLanguage()
    {
        ModelOnFakes m;
        AboutWindow about(m.model);
        about.show();
        QCOMPARE(about.width(), 380);
        QCOMPARE(about.windowTitle(), QStringLiteral("About PDF Brelvonic"));
        QVERIFY(childWithText<QLabel>(about, "Version " + AppInfo::version()));
        QVERIFY(childWithText<QLabel>(about, "A PDF presenter for the live stage"));
        QVERIFY(childWithText<QPushButton>(about, "Open website"));
        m.model.setInterfaceLanguage(AppLanguage::german);
        QTRY_VERIFY_WITH_TIMEOUT(childWithText<QLabel>(about, L10n::t("about.tagline")), 10000);
        QVERIFY(L10n::t("about.tagline") != QStringLiteral("A PDF presenter for the live stage"));
        QCOMPARE(about.width(), 380);
    }

    // The version text: the build's values, or 0.1 and 1 where they are missing.
    void versionFromTheBuild_data()
    {
        QTest::addColumn<QVariant>("shortVersion");
        QTest::addColumn<QVariant>("build");
        QTest::addColumn<QString>("shown");
        QTest::newRow("both given") << QVariant("2.3") << QVariant("41") << "2.3 (41)";
        QTest::newRow("neither") << QVariant() << QVariant() << "0.1 (1)";
        QTest::newRow("empty texts") << QVariant("") << QVariant("") << "0.1 (1)";
        QTest::newRow("version not text") << QVariant(7) << QVariant("127") << "0.1 (127)";
        QTest::newRow("no build number") << QVariant("1.4") << QVariant() << "1.4 (1)";
    }
    void versionFromTheBuild()
    {
        QFETCH(QVariant, shortVersion);
        QFETCH(QVariant, build);
        QFETCH(QString, shown);
        QCOMPARE(AppInfo::composeVersion(shortVersion, build), shown);
        // This build's own version has the same form.
        QVERIFY2(QRegularExpression(R"(^\d+\.\d+(\.\d+)? \(\S+\)$)").match(AppInfo::version()).hasMatch(),
                 qPrintable(AppInfo::version()));
    }

    void iconIsDrawnFromTheBuiltInPicture()
    {
        const QImage icon = AppInfo::iconPixmap(64).toImage();
        QCOMPARE(icon.size(), QSize(64, 64));
        QCOMPARE(qAlpha(icon.pixel(32, 32)), 255);  // the slide
        QCOMPARE(qAlpha(icon.pixel(0, 0)), 0);      // outside the rounded stage
        QVERIFY(!AppInfo::icon().availableSizes().isEmpty());
    }
};

QTEST_MAIN(SettingsWindowTest)
#include "tst_SettingsWindow.moc"
