#include "l10n/L10n.h"
#include "l10n/StringTables.h"
#include "support/FakePlatform.h"

#include <QRegularExpression>
#include <QtTest>

#include <set>

namespace {

const AppLanguage translations[] = {AppLanguage::russian, AppLanguage::chinese, AppLanguage::german};

// Every printf-style directive of a text, in order ("%d", "%.2f", "%@", and
// anything else that a translator might have typed, such as "%s" or "%.1f").
QStringList placeholders(const QString& text)
{
    static const QRegularExpression directive(QStringLiteral("%[-+ #0-9.]*[a-zA-Z@%]"));
    QStringList found;
    for (auto it = directive.globalMatch(text); it.hasNext();)
        found << it.next().captured();
    return found;
}

QString name(AppLanguage language)
{
    return appLanguages.rawValue(language);
}

}

class L10nTest : public QObject {
    Q_OBJECT

    std::shared_ptr<MemoryPreferences> store;

    void useLanguage(const char* raw) { store->values["interfaceLanguage"] = QString::fromLatin1(raw); }

private slots:
    void init()
    {
        store = std::make_shared<MemoryPreferences>();
        AppLanguages::readPreferencesFrom(store);
        AppLanguages::setPreferredLanguagesSource([] { return QStringList{"en-US"}; });
    }

    void cleanup() { AppLanguages::readPreferencesFrom({}); }

    // The tables themselves: same keys in the same order everywhere, the same
    // placeholders as English, and a trailing ellipsis on panel commands.
    void everyTableHasEveryKeyWithTheSamePlaceholders()
    {
        static const QRegularExpression keyForm(QStringLiteral("^[a-z]+([._][a-z]+)*$"));
        const auto& english = l10n::strings(AppLanguage::english);
        std::set<QString> englishKeys;
        for (const auto& row : english) {
            QVERIFY2(row.key && row.text, "empty row in the English table");
            const QString key = QString::fromLatin1(row.key);
            QVERIFY2(keyForm.match(key).hasMatch(), qPrintable(key));
            QVERIFY2(englishKeys.insert(key).second, qPrintable("duplicate key " + key));
        }
        QCOMPARE(englishKeys.size(), std::size_t(185));

        for (AppLanguage language : appLanguages.all()) {
            const auto& rows = l10n::strings(language);
            std::set<QString> keys;
            for (std::size_t i = 0; i < l10n::keyCount; ++i) {
                QVERIFY2(rows[i].key && rows[i].text, qPrintable(name(language) + ": empty row"));
                const QString key = QString::fromLatin1(rows[i].key);
                const QString text = QString::fromUtf8(rows[i].text);
                const QString where = name(language) + " " + key;
                QVERIFY2(keys.insert(key).second, qPrintable(where + ": duplicate key"));
                QVERIFY2(englishKeys.count(key), qPrintable(where + ": key not in the English table"));
                QVERIFY2(key == QLatin1StringView(english[i].key),
                         qPrintable(where + ": out of order, English has " + english[i].key + " here"));
                QVERIFY2(!text.trimmed().isEmpty(), qPrintable(where + ": empty text"));
                QVERIFY2(placeholders(text) == placeholders(QString::fromUtf8(english[i].text)),
                         qPrintable(where + ": placeholders differ from English: " + text));
                if (key.endsWith(QStringLiteral("_ellipsis")))
                    QVERIFY2(text.endsWith(u'…'), qPrintable(where + ": must end in …"));
            }
            QCOMPARE(keys.size(), englishKeys.size());
            QCOMPARE(l10n::table(language).size(), qsizetype(185));
        }
    }

    void placeholderCheckSeesKindAndOrder()
    {
        QCOMPARE(placeholders("Slide %d of %d · set %d/%d"), (QStringList{"%d", "%d", "%d", "%d"}));
        QVERIFY(placeholders("%.2f s") != placeholders("%.1f s"));
        QVERIFY(placeholders("%d×%d · %@") != placeholders("%@ · %d×%d"));
        QVERIFY(placeholders("%d sl.") != placeholders("%s sl."));
    }

    void translationsAreTranslated()
    {
        // A table copied from English by mistake would still pass the key test.
        for (AppLanguage language : translations) {
            int same = 0;
            const auto& rows = l10n::strings(language);
            for (std::size_t i = 0; i < l10n::keyCount; ++i)
                same += qstrcmp(rows[i].text, l10n::englishStrings[i].text) == 0;
            QVERIFY2(same < 30, qPrintable(name(language) + QStringLiteral(": %1 texts equal to English").arg(same)));
        }
    }

    void lookupInTheStoredLanguage()
    {
        useLanguage("en");
        QCOMPARE(L10n::t("slide.of", 3, 12), QStringLiteral("Slide 3 of 12"));
        QCOMPARE(L10n::t("transition.seconds", 0.5), QStringLiteral("0.50 s"));
        QCOMPARE(L10n::t("transition.seconds", 0.35), QStringLiteral("0.35 s"));
        QCOMPARE(L10n::t("timer.left", QStringLiteral("1:05")), QStringLiteral("1:05 left"));
        QCOMPARE(L10n::t("alert.pdf_open"), QStringLiteral("Couldn’t open PDF"));
        useLanguage("ru");
        QCOMPARE(L10n::t("slide.of", 3, 12), QStringLiteral("Слайд 3 из 12"));
        QCOMPARE(L10n::t("transition.seconds", 0.5), QStringLiteral("0,50 с"));
        QCOMPARE(L10n::t("transition.seconds", 0.35), QStringLiteral("0,35 с"));
        QCOMPARE(L10n::t("timer.left", QStringLiteral("1:05")), QStringLiteral("осталось 1:05"));
        QCOMPARE(L10n::t("syphon.status", 1920, 1080, L10n::t("syphon.live")),
                 QStringLiteral("Источник «PDF Brelvonic» · 1920×1080 · идёт"));
        QCOMPARE(L10n::t("alert.show_corrupt"), QStringLiteral("Повреждённый файл показа"));
        useLanguage("de");
        QCOMPARE(L10n::t("transition.seconds", 0.35), QStringLiteral("0,35 s"));
        QCOMPARE(L10n::t("slide.of_set", 2, 9, 1, 3), QStringLiteral("Folie 2 von 9 · Set 1/3"));
        useLanguage("zh-Hans");
        QCOMPARE(L10n::t("transition.seconds", 0.35), QStringLiteral("0.35 秒"));
        QCOMPARE(L10n::t("slide.of", 3, 12), QStringLiteral("第 3 页，共 12 页"));
    }

    void lookupEdgeCases()
    {
        for (const char* raw : {"ru", "en", "zh-Hans", "de"}) {
            useLanguage(raw);
            QCOMPARE(L10n::t("no.such.key"), QStringLiteral("no.such.key"));
            QCOMPARE(L10n::t("no.such.key", 3), QStringLiteral("no.such.key"));
        }
        useLanguage("en");
        // Without arguments nothing is formatted, not even a lone "%".
        QCOMPARE(L10n::t("slide.of"), QStringLiteral("Slide %d of %d"));
        QCOMPARE(L10n::t("100% sure"), QStringLiteral("100% sure"));
        useLanguage("ru");
        QCOMPARE(L10n::t("slide.of"), QStringLiteral("Слайд %d из %d"));
        // Integers are never grouped, in any locale.
        QCOMPARE(L10n::t("playlist.pages", 12345), QStringLiteral("12345 сл."));
        QCOMPARE(L10n::t("transition.seconds", 1234.5), QStringLiteral("1234,50 с"));
        // A placeholder without its argument stays as written.
        QCOMPARE(L10n::t("slide.of", 3), QStringLiteral("Слайд 3 из %d"));
    }

    void storedLanguageFallsBackToTheDetectedOne()
    {
        AppLanguages::setPreferredLanguagesSource([] { return QStringList{"fr-FR", "de-DE"}; });
        QCOMPARE(AppLanguages::current(), AppLanguage::german);  // nothing stored
        useLanguage("fr");
        QCOMPARE(AppLanguages::current(), AppLanguage::german);  // not one of ours
        QCOMPARE(L10n::t("slide.named", 4), QStringLiteral("Folie 4"));
        useLanguage("zh-Hans");
        QCOMPARE(AppLanguages::current(), AppLanguage::chinese);
        // Read at every call: a change of the stored value applies at once.
        store->values["interfaceLanguage"] = QStringLiteral("en");
        QCOMPARE(L10n::t("slide.named", 4), QStringLiteral("Slide 4"));
        // Once the store is gone, the detected language is in force.
        store.reset();
        QCOMPARE(AppLanguages::current(), AppLanguage::german);
    }

    void languagesDetectedByPrefix()
    {
        QCOMPARE(AppLanguages::detect({"fr-FR", "de-DE"}), AppLanguage::german);
        QCOMPARE(AppLanguages::detect({"ja-JP"}), AppLanguage::russian);
        QCOMPARE(AppLanguages::detect({"zh-Hant-TW"}), AppLanguage::chinese);
        QCOMPARE(AppLanguages::detect({"EN-gb", "ru"}), AppLanguage::english);
        QCOMPARE(AppLanguages::detect({"es", "zh-CN", "en"}), AppLanguage::chinese);
        QCOMPARE(AppLanguages::detect({}), AppLanguage::russian);

        AppLanguages::setPreferredLanguagesSource([] { return QStringList{"ja-JP"}; });
        QCOMPARE(AppLanguages::detected(), AppLanguage::russian);
        AppLanguages::setPreferredLanguagesSource([] { return QStringList{"zh-Hant-TW"}; });
        QCOMPARE(AppLanguages::detected(), AppLanguage::chinese);
        QCOMPARE(L10n::t("slide.none"), QStringLiteral("无幻灯片"));
    }

    void pickerOrderNamesAndRawValues()
    {
        QStringList shown;
        QStringList raw;
        for (AppLanguage language : appLanguages.all()) {
            shown << AppLanguages::displayName(language);
            raw << appLanguages.rawValue(language);
        }
        QCOMPARE(shown, (QStringList{"Русский", "English", "中文", "Deutsch"}));
        QCOMPARE(raw, (QStringList{"ru", "en", "zh-Hans", "de"}));
        QVERIFY(!appLanguages.fromRaw(u"zh"));
        QVERIFY(!appLanguages.fromRaw(u"RU"));
    }
};

QTEST_MAIN(L10nTest)
#include "tst_L10n.moc"
