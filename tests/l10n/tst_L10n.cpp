#include "l10n/L10n.h"

#include <QtTest>

class L10nTest : public QObject {
    Q_OBJECT

private slots:
    void lookupAndFormatting()
    {
        QCOMPARE(L10n::t("no.such.key"), QStringLiteral("no.such.key"));
        QCOMPARE(L10n::t("slide.of"), QStringLiteral("Slide %d of %d"));  // no arguments: left as written
        QCOMPARE(L10n::t("slide.of", 3, 12), QStringLiteral("Slide 3 of 12"));
        QCOMPARE(L10n::t("transition.seconds", 0.5), QStringLiteral("0.50 s"));
        QCOMPARE(L10n::t("timer.left", QStringLiteral("1:05")), QStringLiteral("1:05 left"));
        QCOMPARE(L10n::t("alert.pdf_open"), QStringLiteral("Couldn’t open PDF"));
    }

    void languagesDetectedByPrefix()
    {
        QCOMPARE(AppLanguages::detect({"fr-FR", "de-DE"}), AppLanguage::german);
        QCOMPARE(AppLanguages::detect({"ja-JP"}), AppLanguage::russian);
        QCOMPARE(AppLanguages::detect({"zh-Hant-TW"}), AppLanguage::chinese);
        QCOMPARE(AppLanguages::detect({"EN-gb", "ru"}), AppLanguage::english);
        QCOMPARE(AppLanguages::detect({}), AppLanguage::russian);
    }
};

QTEST_MAIN(L10nTest)
#include "tst_L10n.moc"
