#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "platform/QSettingsPreferences.h"
#include "support/FakePlatform.h"
#include "support/ModelFixtures.h"

#include <QtTest>

#include <limits>

// A model started on a fake store that holds `stored`.
struct StartedModel : ModelOnFakes {
    explicit StartedModel(const QMap<QString, QVariant>& stored)
    {
        platform.preferences->values.insert(stored);
        model.start();
    }
};

class PreferencesTest : public QObject {
    Q_OBJECT

    // The systems these tests run on prefer English unless a test says otherwise.
    static void systemPrefers(QStringList languages)
    {
        AppLanguages::setPreferredLanguagesSource([languages] { return languages; });
    }

private slots:
    void init() { systemPrefers({"en-US"}); }

    void theSettingsStoreOfThisUser()
    {
        // main() pointed the per-user configuration folder at a temporary one.
        const QString file = qEnvironmentVariable("XDG_CONFIG_HOME") + "/Brelvonic/PDF Brelvonic.conf";
        QVERIFY(!QFile::exists(file));
        {
            QSettingsPreferences store;
            store.setValue("aspect", "r16x10");
            store.setValue("customWidth", 1280);
        }
        QSettingsPreferences reopened;
        QCOMPARE(reopened.value("aspect").toString(), QStringLiteral("r16x10"));
        QCOMPARE(reopened.value("customWidth").toInt(), 1280);
        QVERIFY(!reopened.value("customHeight").isValid());
        QVERIFY(QFile::exists(file));
    }
    void persistWritesEveryKeyOnce()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.persistPreferences();
        std::vector<QString> written = platform.preferences->writes;
        std::sort(written.begin(), written.end());
        const std::vector<QString> keys{"aspect", "contentFit", "customHeight", "customWidth", "hideOutputCursor",
                                        "interfaceLanguage", "isSyphonEnabled", "markBlue", "markGreen", "markRed",
                                        "outputAlwaysOnTop", "plannedDuration", "transitionDuration", "transitionStyle"};
        QCOMPARE(written, keys);  // no display selected: no display key
        model.selectedDisplayID.set(42);
        platform.preferences->writes.clear();
        model.persistPreferences();
        QCOMPARE(platform.preferences->writes.back(), QStringLiteral("selectedDisplayID"));
        model.selectedDisplayID.set(std::nullopt);
        model.persistPreferences();
        // The key is never removed.
        QCOMPARE(platform.preferences->values.value("selectedDisplayID").toULongLong(), 42ULL);
    }

    void roundTripThroughARealSettingsFile()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath("prefs.ini");
        FakePlatform platform;
        {
            PlatformServices services = platform.services();
            services.preferences = std::make_shared<QSettingsPreferences>(file);
            AppModel model(services);
            model.aspect.set(AspectMode::r4x3);
            model.contentFit.set(ContentFit::cover);
            model.customWidth.set(1280);
            model.customHeight.set(720);
            model.outputAlwaysOnTop.set(false);
            model.isSyphonEnabled.set(false);
            model.transitionStyle.set(TransitionStyle::none);
            model.transitionDuration.set(0.8);
            model.plannedDuration.set(1800);
            model.hideOutputCursor.set(false);
            model.interfaceLanguage.set(AppLanguage::chinese);
            model.markColor.set(MarkColor{0.18, 0.72, 0.96});
            model.selectedDisplayID.set(4000000000u);
            model.persistPreferences();
        }
        PlatformServices services = platform.services();
        services.preferences = std::make_shared<QSettingsPreferences>(file);
        AppModel model(services);
        model.start();
        QCOMPARE(model.aspect(), AspectMode::r4x3);
        QCOMPARE(model.contentFit(), ContentFit::cover);
        QCOMPARE(model.customWidth(), 1280);
        QCOMPARE(model.customHeight(), 720);
        QVERIFY(!model.outputAlwaysOnTop());
        QVERIFY(!model.isSyphonEnabled());
        QCOMPARE(model.transitionStyle(), TransitionStyle::none);
        QCOMPARE(model.transitionDuration(), 0.8);
        QCOMPARE(model.plannedDuration(), 1800.0);
        QVERIFY(!model.hideOutputCursor());
        QCOMPARE(model.interfaceLanguage(), AppLanguage::chinese);
        QCOMPARE(model.markColor(), (MarkColor{0.18, 0.72, 0.96}));
        QCOMPARE(model.selectedDisplayID(), std::optional<uint32_t>(4000000000u));
    }

    void displayIdentifierMustFitThirtyTwoBits()
    {
        const std::pair<QVariant, std::optional<uint32_t>> cases[] = {
            {4294967295LL, 4294967295u}, {4294967296LL, std::nullopt}, {-5, std::nullopt},
            {0, std::nullopt},           {"7", 7u},                    {"screen", std::nullopt},
        };
        for (const auto& [stored, expected] : cases)
            QCOMPARE(StartedModel({{"selectedDisplayID", stored}}).model.selectedDisplayID(), expected);
    }

    void badStoredValuesKeepTheDefaults()
    {
        auto&& [platform, model] = StartedModel({{"aspect", "r21x9"}, {"contentFit", "stretch"}, {"customWidth", 0},
                                                 {"customHeight", 720}, {"transitionStyle", "wipe"},
                                                 {"transitionDuration", -0.2}, {"plannedDuration", -60.0},
                                                 {"interfaceLanguage", "fr"}, {"selectedDisplayID", 4294967296LL},
                                                 {"outputAlwaysOnTop", "maybe"}});
        QCOMPARE(model.aspect(), AspectMode::fillDisplay);
        QCOMPARE(model.contentFit(), ContentFit::contain);
        QCOMPARE(model.customWidth(), 1920);
        QCOMPARE(model.customHeight(), 720);
        QCOMPARE(model.transitionStyle(), TransitionStyle::fade);
        QCOMPARE(model.transitionDuration(), 0.45);
        QCOMPARE(model.plannedDuration(), -60.0);  // applied as read: no plan
        QVERIFY(!model.timerRemaining());
        QVERIFY(model.outputAlwaysOnTop());
        QVERIFY(!model.selectedDisplayID());
        // An unknown language is replaced by the detected one, and written back.
        QCOMPARE(model.interfaceLanguage(), AppLanguage::english);
        QCOMPARE(platform.preferences->values.value("interfaceLanguage").toString(), QStringLiteral("en"));
    }

    void numbersThatAreNotFiniteAreNotNumbers()
    {
        // A hand-edited settings file: "inf" would make every fade endless
        // and the remaining time of a plan meaningless.
        const StartedModel text({{"transitionDuration", "inf"}, {"plannedDuration", "inf"}, {"markRed", "nan"},
                                 {"markGreen", 0.5}});
        QCOMPARE(text.model.transitionDuration(), 0.45);
        QCOMPARE(text.model.plannedDuration(), 0.0);
        QCOMPARE(text.model.markColor(), MarkColor{});

        const double inf = std::numeric_limits<double>::infinity();
        const StartedModel typed({{"transitionDuration", inf}, {"markRed", 0.25}, {"markBlue", -inf}});
        QCOMPARE(typed.model.transitionDuration(), 0.45);
        QCOMPARE(typed.model.markColor(), (MarkColor{0.25, 0, 0}));
    }

    void firstRunOnAGermanSystemStoresGerman()
    {
        systemPrefers({"fr-FR", "de-DE"});
        auto&& [platform, model] = ModelOnFakes();
        QVERIFY(!platform.preferences->values.contains("interfaceLanguage"));
        model.start();
        QCOMPARE(platform.preferences->values.value("interfaceLanguage").toString(), QStringLiteral("de"));
        QCOMPARE(model.interfaceLanguage(), AppLanguage::german);
        // The texts follow what the model stores.
        QCOMPARE(L10n::t("set.end"), QStringLiteral("Ende des Sets"));
        model.interfaceLanguage.set(AppLanguage::russian);
        QCOMPARE(L10n::t("set.end"), QStringLiteral("Конец сета"));
    }

    void storedLanguageWinsOverTheSystem()
    {
        systemPrefers({"de-DE"});
        auto&& [platform, model] = StartedModel({{"interfaceLanguage", "zh-Hans"}});
        QCOMPARE(model.interfaceLanguage(), AppLanguage::chinese);
        QCOMPARE(platform.preferences->values.value("interfaceLanguage").toString(), QStringLiteral("zh-Hans"));
    }

    void markRedAloneGivesRedOnly()
    {
        QCOMPARE(StartedModel({{"markRed", 0.5}}).model.markColor(), (MarkColor{0.5, 0, 0}));
        // Without red nothing applies.
        QCOMPARE(StartedModel({{"markGreen", 0.9}}).model.markColor(), MarkColor{});
    }

    void choosingAPaletteColourPersists()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.chooseMarkColor(MarkColor::presets()[3]);
        QCOMPARE(platform.preferences->values.value("markGreen").toDouble(), 0.82);
    }

    void clearingRecentFilesEmptiesBothLists()
    {
        FakePlatform platform;
        platform.recents->items = {"/show/a.pdf", "/show/b.brelvonic"};
        AppModel model(platform.services());
        model.start();
        QCOMPARE(model.recentFiles().size(), 2);
        model.clearRecentFiles();
        QVERIFY(platform.recents->items.isEmpty());
        QVERIFY(model.recentFiles().isEmpty());
    }
};

// Points the per-user configuration folder at a temporary one before anything
// can open a settings store, so no test reaches the user's own settings.
int main(int argc, char** argv)
{
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", config.path().toLocal8Bit());
    QApplication app(argc, argv);
    PreferencesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_Preferences.moc"
