#include "base/DecimalText.h"
#include "l10n/L10n.h"
#include "show/SavedShow.h"
#include "support/ModelFixtures.h"
#include "support/SmallDisk.h"

#include <QtTest>

#include <atomic>
#include <functional>
#include <limits>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// Show files on real files in a temporary folder: the coded form, saving,
// opening, and what survives each kind of bad file.
class ShowFileTest : public QObject {
    Q_OBJECT

    static QByteArray readAll(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    static bool writeAll(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    }

    static QJsonObject readJson(const QString& path) { return QJsonDocument::fromJson(readAll(path)).object(); }

    // Every setting a show carries, as the model holds it.
    using Settings = std::tuple<AspectMode, ContentFit, int, int, TransitionStyle, double, double, bool, MarkColor>;
    static Settings settings(const AppModel& model)
    {
        return {model.aspect(), model.contentFit(), model.customWidth(), model.customHeight(), model.transitionStyle(),
                model.transitionDuration(), model.plannedDuration(), model.hideOutputCursor(), model.markColor()};
    }

    // A show as the program writes it, with settings that differ from the defaults.
    static SavedShow sampleShow(const std::vector<SavedShowItem>& items = {})
    {
        return {.settings = {.aspect = "r4x3", .contentFit = "cover", .customWidth = 1280, .customHeight = 720,
                             .transitionStyle = "none", .transitionDuration = 0.8, .plannedDuration = 2700,
                             .hideOutputCursor = false, .markRed = 0.2, .markGreen = 0.25, .markBlue = 1},
                .items = items};
    }

    static SavedShowItem item(const QString& path)
    {
        SavedShowItem out;
        out.path = path;
        return out;
    }

private slots:
    void pathsAreRelativeOnlyBelowTheShowFolder()
    {
        ModelWithFolder s;
        const QString b = s.pdf("Other/b.pdf");
        const QString c = s.pdf("Shows2/c.pdf");
        s.model.replacePlaylist({s.pdf("Shows/slides/a.pdf"), b, c});
        const QString show = s.file("Shows/gig.brelvonic");
        s.model.saveShow(show);

        QVERIFY(s.alerts().isEmpty());
        // No bookmarks are made on this platform, so the key is left out.
        QStringList written;
        for (const auto& value : readJson(show).value("items").toArray()) {
            written << value.toObject().value("path").toString();
            QVERIFY(!value.toObject().contains("bookmark"));
        }
        QCOMPARE(written, (QStringList{"slides/a.pdf", b, c}));
        QVERIFY(QDir::isAbsolutePath(b));
        QCOMPARE(s.model.showFileURL(), std::optional<QString>(show));
        QCOMPARE(s.model.recentFiles().value(0), show);

        // The prefix test works on the cleaned paths and includes the slash.
        QCOMPARE(AppModel::portablePath("/Shows2/x.pdf", "/Shows/gig.brelvonic"), QString("/Shows2/x.pdf"));
        QCOMPARE(AppModel::portablePath("/Shows/./deck/../x.pdf", "/Shows/gig.brelvonic"), QString("x.pdf"));
        QCOMPARE(AppModel::portablePath("/Shows", "/Shows/gig.brelvonic"), QString("/Shows"));
    }

    void encodingIsSortedOneMemberPerLineAndByteStable()
    {
        ModelWithFolder s;
        s.model.replacePlaylist({s.pdf("a.pdf", 6), s.pdf("b.pdf")});
        s.model.addBookmark("Chorus", 4);
        s.model.addBookmark("Intro", 0);
        s.model.goToPage(2);
        s.model.setCurrentNote(" Pause ");
        s.model.saveShow(s.file("one.brelvonic"));
        s.model.saveShow(s.file("two.brelvonic"));
        const QByteArray first = readAll(s.file("one.brelvonic"));
        QVERIFY(!first.isEmpty());
        QCOMPARE(readAll(s.file("two.brelvonic")), first);

        // Members of every object in name order, each on its own line.
        const QStringList keys{"aspect", "contentFit", "customHeight", "customWidth", "formatVersion",
                               "hideOutputCursor", "items", "markBlue", "markGreen", "markRed",
                               "plannedDuration", "transitionDuration", "transitionStyle"};
        qsizetype last = -1;
        for (const QString& key : keys) {
            const qsizetype at = first.indexOf(QByteArray("\n    \"") + key.toUtf8() + "\": ");
            QVERIFY2(at > last, qPrintable(key));
            last = at;
        }
        QVERIFY(first.indexOf("\"id\"") < first.indexOf("\"pageIndex\""));
        QVERIFY(first.indexOf("\"pageIndex\"") < first.indexOf("\"title\""));
        QVERIFY(first.indexOf("\"notes\"") < first.indexOf("\"path\""));
        for (const QByteArray& line : first.split('\n'))
            QVERIFY2(line.count("\": ") <= 1, line.constData());

        const QJsonObject json = readJson(s.file("one.brelvonic"));
        QCOMPARE(json.value("formatVersion").toInteger(), qint64(1));
        const QJsonObject firstItem = json.value("items").toArray().at(0).toObject();
        QCOMPARE(firstItem.value("notes").toObject(), (QJsonObject{{"2", " Pause "}}));
        const QJsonArray cues = firstItem.value("cues").toArray();
        QCOMPARE(cues.size(), 2);
        const QString id = cues.at(0).toObject().value("id").toString();
        QCOMPARE(id, s.model.playlist()[0].cues[0].id.toString(QUuid::WithoutBraces).toUpper());
        QCOMPARE(cues.at(1).toObject().value("title").toString(), QString("Chorus"));
    }

    void recordsSurviveEncodeAndDecode()
    {
        SavedShowItem first = item("slides/a.pdf");
        first.bookmark = QByteArray("\x00\x01\xfe bookmark", 12);
        first.cues = {{QUuid::createUuid(), 4, "Chorus"}, {QUuid::createUuid(), 0, "Intro"}};
        first.notes = {{"0", "Lights down"}, {"4", " Pause "}};
        const SavedShow show = sampleShow({first, item("/elsewhere/b.pdf")});
        const auto decoded = SavedShow::decode(show.encode());
        QVERIFY(decoded);
        QCOMPARE(*decoded, show);
        // An item without a bookmark reads back with none.
        QVERIFY(!decoded->items[1].bookmark);

        // Unknown keys are ignored and the version is read, not compared.
        QJsonObject root = QJsonDocument::fromJson(show.encode()).object();
        root.insert("formatVersion", 2);
        root.insert("comment", "from a later version");
        const auto later = SavedShow::decode(QJsonDocument(root).toJson());
        QVERIFY(later);
        QCOMPARE(later->formatVersion, qint64(2));
        QCOMPARE(later->items, show.items);
    }

    void damagedFilesAreRejected_data()
    {
        QTest::addColumn<QByteArray>("json");
        SavedShowItem one = item("a.pdf");
        one.cues = {{QUuid::createUuid(), 1, "Intro"}};
        one.notes = {{"1", "note"}};
        const QJsonObject good = QJsonDocument::fromJson(sampleShow({one}).encode()).object();
        QVERIFY(SavedShow::decode(QJsonDocument(good).toJson()));

        // Each edit works on a copy of the good show, its first item or that item's first cue.
        const auto changed = [&](const std::function<void(QJsonObject&)>& edit) {
            QJsonObject root = good;
            edit(root);
            return QJsonDocument(root).toJson();
        };
        const auto inFirst = [](QJsonObject& parent, const char* key, const std::function<void(QJsonObject&)>& edit) {
            QJsonArray list = parent.value(key).toArray();
            QJsonObject first = list.at(0).toObject();
            edit(first);
            list[0] = first;
            parent.insert(key, list);
        };
        const auto changedItem = [&](const std::function<void(QJsonObject&)>& edit) {
            return changed([&](QJsonObject& root) { inFirst(root, "items", edit); });
        };
        const auto changedCue = [&](const std::function<void(QJsonObject&)>& edit) {
            return changedItem([&](QJsonObject& itemObject) { inFirst(itemObject, "cues", edit); });
        };

        QTest::newRow("not json") << QByteArray("{\"aspect\": ");
        QTest::newRow("top-level array") << QByteArray("[]");
        QTest::newRow("empty file") << QByteArray();
        QTest::newRow("no formatVersion") << changed([](QJsonObject& o) { o.remove("formatVersion"); });
        QTest::newRow("no markBlue") << changed([](QJsonObject& o) { o.remove("markBlue"); });
        QTest::newRow("width as text") << changed([](QJsonObject& o) { o.insert("customWidth", "1920"); });
        QTest::newRow("width with fraction") << changed([](QJsonObject& o) { o.insert("customWidth", 19.5); });
        QTest::newRow("cursor as number") << changed([](QJsonObject& o) { o.insert("hideOutputCursor", 1); });
        QTest::newRow("duration as null") << changed([](QJsonObject& o) { o.insert("plannedDuration", QJsonValue()); });
        QTest::newRow("items as object") << changed([](QJsonObject& o) { o.insert("items", QJsonObject()); });
        QTest::newRow("item as string") << changed([](QJsonObject& o) { o.insert("items", QJsonArray{"a.pdf"}); });
        QTest::newRow("item without path") << changedItem([](QJsonObject& o) { o.remove("path"); });
        QTest::newRow("item without cues") << changedItem([](QJsonObject& o) { o.remove("cues"); });
        QTest::newRow("item without notes") << changedItem([](QJsonObject& o) { o.remove("notes"); });
        QTest::newRow("note not text") << changedItem([](QJsonObject& o) { o.insert("notes", QJsonObject{{"1", 5}}); });
        QTest::newRow("bookmark not base64") << changedItem([](QJsonObject& o) { o.insert("bookmark", "*not base64*"); });
        QTest::newRow("bookmark as number") << changedItem([](QJsonObject& o) { o.insert("bookmark", 7); });
        QTest::newRow("cue id not a uuid") << changedCue([](QJsonObject& o) { o.insert("id", "cue-1"); });
        QTest::newRow("cue id in braces")
            << changedCue([](QJsonObject& o) { o.insert("id", QUuid::createUuid().toString()); });
        QTest::newRow("cue without title") << changedCue([](QJsonObject& o) { o.remove("title"); });
        QTest::newRow("cue page as text") << changedCue([](QJsonObject& o) { o.insert("pageIndex", "1"); });
    }

    void damagedFilesAreRejected()
    {
        QFETCH(QByteArray, json);
        QVERIFY(!SavedShow::decode(json));

        // Opening it alerts and leaves the loaded set and settings alone.
        ModelWithFolder s;
        s.model.replacePlaylist({s.pdf("a.pdf")});
        s.model.saveShow(s.file("before.brelvonic"));
        const auto playlist = s.model.playlist();
        const auto recents = s.model.recentFiles();
        QVERIFY(writeAll(s.file("damaged.brelvonic"), json));
        s.model.openShow(s.file("damaged.brelvonic"));
        QCOMPARE(s.alerts(), QStringList{"Damaged show file: damaged.brelvonic"});
        QCOMPARE(s.model.playlist(), playlist);
        QCOMPARE(s.model.aspect(), AspectMode::fillDisplay);
        QCOMPARE(s.model.showFileURL(), std::optional<QString>(s.file("before.brelvonic")));
        QCOMPARE(s.model.recentFiles(), recents);
    }

    // Only regular files are read: a pipe would hold the console until some
    // program writes to it, a device could feed it without end. Each alerts
    // with its name, as do a missing show and a folder.
    void aShowThatIsNoRegularFileIsNotRead()
    {
        ModelWithFolder s;
        const QString pipe = s.file("pipe.brelvonic");
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(QFile::link("/dev/null", s.file("device.brelvonic")));
        QVERIFY(QDir().mkpath(s.file("folder.brelvonic")));
        s.model.openShow(s.file("gone.brelvonic"));
        s.model.openShow(s.file("folder.brelvonic"));

        // Should the pipe be opened anyway, this writer lets the test end.
        std::atomic<bool> done{false};
        std::thread writer([&] {
            while (!done) {
                const int fd = ::open(QFile::encodeName(pipe).constData(), O_WRONLY | O_NONBLOCK);
                if (fd >= 0) {
                    ::close(fd);
                    return;
                }
                std::this_thread::yield();
            }
        });
        s.model.openShow(pipe);
        s.model.openShow(s.file("device.brelvonic"));
        done = true;
        writer.join();

        // Far larger than any set (sparse, so it costs no disk): never
        // read into memory.
        QFile huge(s.file("huge.brelvonic"));
        QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(qint64(4) << 30));
        huge.close();
        s.model.openShow(huge.fileName());

        QStringList expected;
        for (const char* name : {"gone", "folder", "pipe", "device"})
            expected << QString("Couldn’t read the show: %1.brelvonic").arg(name);
        expected << "Damaged show file: huge.brelvonic";
        QCOMPARE(s.alerts(), expected);
        QVERIFY(s.model.playlist().empty());
    }

    void noteNamesParseAsSignedDecimalIntegers()
    {
        SavedShowItem coded = item("a.pdf");
        coded.notes = {{"3", "three"}, {"x", "dropped"}, {"-1", "minus one"}};
        QCOMPARE(coded.notesByPage(), (std::map<qint64, QString>{{-1, "minus one"}, {3, "three"}}));

        QCOMPARE(DecimalText::parseInt64("+12"), std::optional<qint64>(12));
        QCOMPARE(DecimalText::parseInt64("007"), std::optional<qint64>(7));
        QCOMPARE(DecimalText::parseInt64("9223372036854775807"), std::optional<qint64>(9223372036854775807LL));
        QCOMPARE(DecimalText::parseInt64("-9223372036854775808"), std::optional<qint64>(std::numeric_limits<qint64>::min()));
        for (const char* bad : {"", "+", "-", " 7", "7 ", "1.0", "1e3", "0x1f", "9223372036854775808",
                                   "--1", "\u0663" /* Arabic-Indic three */})
            QVERIFY2(!DecimalText::parseInt64(QString::fromUtf8(bad)), bad);

        // A hand-edited clash keeps the note under the name this program writes.
        SavedShowItem clash = item("a.pdf");
        clash.notes = {{"+7", "plus"}, {"07", "zero"}, {"7", "plain"}, {"+8", "plus eight"}, {"08", "zero eight"}};
        QCOMPARE(clash.notesByPage(), (std::map<qint64, QString>{{7, "plain"}, {8, "plus eight"}}));
    }

    void aShowOpensWithItsSetCuesNotesAndSettings()
    {
        ModelWithFolder s;
        const QString a = s.pdf("Shows/slides/a.pdf", 6);
        const QString b = s.pdf("Other/b.pdf", 2);
        SavedShowItem first = item("slides/a.pdf");
        // Written out of order: opening sorts by page, keeping equal pages in file order.
        const QUuid later = QUuid::createUuid();
        const QUuid earlier = QUuid::createUuid();
        first.cues = {{later, 5, "Outro"}, {earlier, 1, "Verse"}, {QUuid::createUuid(), 1, "Verse again"}};
        first.notes = {{"1", "Breathe"}, {"x", "dropped"}};
        const QString showPath = s.file("Shows/gig.brelvonic");
        QVERIFY(writeAll(showPath, sampleShow({first, item(b)}).encode()));

        s.model.annotationUndo.set({AnnotationUndo{}});
        s.model.openShow(showPath);
        QVERIFY(s.alerts().isEmpty());
        QCOMPARE(s.paths(), (QStringList{a, b}));
        QCOMPARE(s.model.playlistIndex(), 0);
        QCOMPARE(s.model.pageIndex(), 0);
        QCOMPARE(s.model.documentURL(), std::optional<QString>(a));
        const auto& cues = s.model.playlist()[0].cues;
        QCOMPARE(cues.size(), std::size_t(3));
        QCOMPARE(cues[0].id, earlier);
        QCOMPARE(cues[1].title, QString("Verse again"));
        QCOMPARE(cues[2].id, later);
        QCOMPARE(s.model.playlist()[0].notesByPage, (std::map<qint64, QString>{{1, "Breathe"}}));
        QVERIFY(s.model.playlist()[1].cues.empty());
        QCOMPARE(settings(s.model), (Settings{AspectMode::r4x3, ContentFit::cover, 1280, 720, TransitionStyle::none, 0.8,
                                              2700.0, false, MarkColor{0.2, 0.25, 1}}));
        QCOMPARE(s.model.showFileURL(), std::optional<QString>(showPath));
        QVERIFY(s.model.annotationUndo().empty());
        QVERIFY(s.model.timerStartedAt());
        QCOMPARE(s.model.recentFiles().value(0), showPath);
        QCOMPARE(s.platform.preferences->values.value("aspect").toString(), QString("r4x3"));
    }

    void settingsTheModelCannotTakeKeepTheirValues()
    {
        ModelWithFolder s;
        s.pdf("a.pdf");
        SavedShow show = sampleShow({item("a.pdf")});
        show.settings.aspect = "r5x4";
        show.settings.contentFit = "stretch";
        show.settings.customWidth = 0;
        show.settings.customHeight = 4294967296;
        show.settings.transitionStyle = "wipe";
        show.settings.transitionDuration = 0;
        show.settings.plannedDuration = 0;
        QVERIFY(writeAll(s.file("odd.brelvonic"), show.encode()));

        s.model.aspect.set(AspectMode::r16x10);
        s.model.plannedDuration.set(600);
        s.model.openShow(s.file("odd.brelvonic"));
        QCOMPARE(s.model.playlist().size(), std::size_t(1));
        // The valid ones of the same show are taken.
        QCOMPARE(settings(s.model), (Settings{AspectMode::r16x10, ContentFit::contain, 1920, 1080, TransitionStyle::fade, 0.45,
                                              0.0, false, MarkColor{0.2, 0.25, 1}}));
    }

    // Settings equal to the current ones are not written: their observers
    // (output window, frame publisher) see no change.
    void equalSettingsDoNotNotify()
    {
        ModelWithFolder s;
        s.model.replacePlaylist({s.pdf("a.pdf")});
        const QString same = s.file("same.brelvonic");
        s.model.saveShow(same);
        const QString different = s.file("different.brelvonic");
        QVERIFY(writeAll(different, sampleShow({item("a.pdf")}).encode()));

        const auto settingsChange = [&](const QString& showPath) {
            bool changed = false;
            const auto tracker = obs::withTracking([&] { (void)settings(s.model); }, [&] { changed = true; });
            s.model.openShow(showPath);
            return changed;
        };
        QVERIFY(!settingsChange(same));
        QCOMPARE(s.model.playlist().size(), std::size_t(1));
        QVERIFY(settingsChange(different));
        QVERIFY(!settingsChange(different));
        QVERIFY(s.alerts().isEmpty());
    }

    void aShowMovedWithItsPdfsOpensAgain()
    {
        ModelWithFolder s;
        s.model.replacePlaylist({s.pdf("Shows/slides/a.pdf", 4), s.pdf("Shows/b.pdf", 2)});
        s.model.addBookmark("Intro", 3);
        s.model.saveShow(s.file("Shows/gig.brelvonic"));

        // Into another temporary folder, opened by another model.
        ModelWithFolder moved;
        QVERIFY(QDir().mkpath(moved.file("Moved/slides")));
        for (const QString& name : QStringList{"gig.brelvonic", "slides/a.pdf", "b.pdf"})
            QVERIFY(QFile::rename(s.file("Shows/" + name), moved.file("Moved/" + name)));
        moved.model.openShow(moved.file("Moved/gig.brelvonic"));
        QVERIFY(moved.alerts().isEmpty());
        QCOMPARE(moved.paths(), (QStringList{moved.file("Moved/slides/a.pdf"), moved.file("Moved/b.pdf")}));
        QCOMPARE(moved.model.playlist()[0].cues.size(), std::size_t(1));
        QCOMPARE(moved.model.playlist()[0].cues[0].title, QString("Intro"));
        QCOMPARE(moved.model.pageCount(), 4);
    }

    void missingPdfsAreLeftOutAndNamed()
    {
        ModelWithFolder s;
        const QString a = s.pdf("a.pdf");
        const QString b = s.pdf("sub/b.pdf");
        const QString c = s.pdf("c.pdf");
        s.model.replacePlaylist({a, b, c});
        const QString showPath = s.file("gig.brelvonic");
        s.model.saveShow(showPath);
        QVERIFY(QFile::remove(b));

        ModelWithFolder reopened;
        reopened.model.openShow(showPath);
        QCOMPARE(reopened.paths(), (QStringList{a, c}));
        QCOMPARE(reopened.model.playlistIndex(), 0);
        QCOMPARE(reopened.model.pageIndex(), 0);
        QCOMPARE(reopened.model.showFileURL(), std::optional<QString>(showPath));
        QCOMPARE(reopened.alerts(), QStringList{"Some PDFs were not found: b.pdf"});

        // A file that is there but is no PDF is left out without being named missing.
        QVERIFY(QFile::remove(a));
        TestPdf::writeNotPdf(a);
        ModelWithFolder again;
        again.model.openShow(showPath);
        QCOMPARE(again.paths(), (QStringList{c}));
        QCOMPARE(again.alerts().size(), qsizetype(2));
        QCOMPARE(again.platform.dialogs->alerts[0].title, L10n::t("alert.pdf_open"));
        QCOMPARE(again.platform.dialogs->alerts[1].text, QString("b.pdf"));
    }

    void aShowWithNothingToOpenChangesNothing()
    {
        ModelWithFolder s;
        const QString loaded = s.pdf("loaded.pdf");
        s.model.replacePlaylist({loaded});
        s.model.aspect.set(AspectMode::r1x1);

        SavedShow show = sampleShow({item("gone/c.pdf"), item(s.file("d.pdf")), item("e.pdf")});
        QVERIFY(writeAll(s.file("lost.brelvonic"), show.encode()));
        s.model.openShow(s.file("lost.brelvonic"));
        QCOMPARE(s.alerts(), QStringList{"Show files not found: c.pdf\nd.pdf\ne.pdf"});
        QCOMPARE(s.paths(), (QStringList{loaded}));
        QCOMPARE(s.model.aspect(), AspectMode::r1x1);
        QCOMPARE(s.model.plannedDuration(), 0.0);
        QVERIFY(!s.model.showFileURL());

        // An empty show names the show file itself.
        show.items.clear();
        QVERIFY(writeAll(s.file("empty.brelvonic"), show.encode()));
        s.model.openShow(s.file("empty.brelvonic"));
        QCOMPARE(s.alerts().size(), qsizetype(2));
        QCOMPARE(s.platform.dialogs->alerts[1].text, QString("empty.brelvonic"));
        QCOMPARE(s.paths(), (QStringList{loaded}));
    }

    // Hand-edited paths: an empty one means the show's folder, which is no
    // PDF; a trailing slash still names the last part. No alert goes blank.
    void handEditedPathsAreNamedByTheirLastPart()
    {
        ModelWithFolder s;
        QVERIFY(QDir().mkpath(s.file("Shows")));
        QVERIFY(writeAll(s.file("Shows/odd.brelvonic"), sampleShow({item(""), item("gone/")}).encode()));
        s.model.openShow(s.file("Shows/odd.brelvonic"));
        QVERIFY(s.model.playlist().empty());
        const auto& alerts = s.platform.dialogs->alerts;
        QVERIFY(!alerts.empty());
        for (const auto& alert : alerts)
            QVERIFY2(!alert.text.trimmed().isEmpty(), qPrintable(alert.title));
        QCOMPARE(s.alerts().constLast(), QString("Show files not found: gone"));
    }

    void aFailedSaveKeepsTheEarlierFile()
    {
        ModelWithFolder s;
        s.model.replacePlaylist({s.pdf("a.pdf")});
        const QString earlier = s.file("gig.brelvonic");
        s.model.saveShow(earlier);
        const QByteArray before = readAll(earlier);
        const QStringList recents = s.model.recentFiles();

        s.model.addBookmark("Intro", 0);
        s.model.saveShow(s.file("no such folder/gig.brelvonic"));
        const auto& alerts = s.platform.dialogs->alerts;
        QCOMPARE(alerts.size(), std::size_t(1));
        QCOMPARE(alerts[0].title, QString("Couldn’t save the show"));
        QVERIFY(!alerts[0].text.isEmpty());
        QCOMPARE(s.model.showFileURL(), std::optional<QString>(earlier));
        QCOMPARE(s.model.recentFiles(), recents);

        // A folder in the way of the show cannot be replaced by it.
        QVERIFY(QDir().mkpath(s.file("taken.brelvonic/inside")));
        s.model.saveShow(s.file("taken.brelvonic"));
        QCOMPARE(alerts.size(), std::size_t(2));
        QVERIFY(QFileInfo(s.file("taken.brelvonic/inside")).isDir());
        QCOMPARE(readAll(earlier), before);
        QCOMPARE(s.model.showFileURL(), std::optional<QString>(earlier));
    }

    // A full disk used to leave an empty show behind without a word. Each
    // failure keeps the earlier show byte for byte and says why, in the
    // interface language.
    void aSaveTheDiskRefusesKeepsTheEarlierShowAndSaysWhy()
    {
        if (::geteuid() != 0)
            QSKIP("mounting a small disk needs root");
        struct Case {
            const char* name;
            std::function<bool(SmallDisk&)> refuse;
            const char* reason;
        };
        const std::vector<Case> cases{
            {"full", [](SmallDisk& disk) { return disk.fill(); }, "error.no_space"},
            {"read-only", [](SmallDisk& disk) { return disk.makeReadOnly(); }, "error.read_only"},
        };
        for (const AppLanguage language : {AppLanguage::english, AppLanguage::german}) {
            for (const auto& c : cases) {
                ModelWithFolder s;
                s.model.interfaceLanguage.set(language);
                SmallDisk disk;
                QVERIFY2(disk.mounted(), c.name);
                s.model.replacePlaylist({s.pdf("a.pdf")});
                const QString show = disk.file("gig.brelvonic");
                s.model.saveShow(show);
                const QByteArray before = readAll(show);
                QVERIFY(!before.isEmpty());

                // Long notes: the new show is larger than any space a page leaves.
                s.model.setCurrentNote(QString(20000, u'n'));
                QVERIFY2(c.refuse(disk), c.name);
                s.model.saveShow(show);
                QCOMPARE(readAll(show), before);
                QCOMPARE(s.alerts(), QStringList{L10n::t("alert.show_save") + ": " + L10n::t(c.reason)});
                // Both reasons name the disk ("Datenträger") in German.
                QCOMPARE(s.alerts().constFirst().contains("Datenträger"), language == AppLanguage::german);
                QCOMPARE(s.model.showFileURL(), std::optional<QString>(show));
                // Nothing is left beside it.
                QStringList files = QDir(disk.path()).entryList(QDir::Files | QDir::Hidden);
                files.removeAll(".filler");
                QCOMPARE(files, QStringList{"gig.brelvonic"});
            }
        }
    }

    void aSaveIntoAFolderWithoutWritePermissionSaysSo()
    {
        if (::geteuid() == 0)
            QSKIP("root may write into any folder");
        ModelWithFolder s;
        s.model.replacePlaylist({s.pdf("a.pdf")});
        QVERIFY(QDir().mkpath(s.file("locked")));
        const QString show = s.file("locked/gig.brelvonic");
        s.model.saveShow(show);
        const QByteArray before = readAll(show);
        QVERIFY(QFile::setPermissions(s.file("locked"), QFile::ReadOwner | QFile::ExeOwner));
        s.model.addBookmark("Intro", 0);
        s.model.saveShow(show);
        QFile::setPermissions(s.file("locked"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QCOMPARE(readAll(show), before);
        QCOMPARE(s.alerts(), QStringList{L10n::t("alert.show_save") + ": " + L10n::t("error.no_permission")});
    }

    void savePanelAsksOnlyWhenNeeded()
    {
        ModelWithFolder s;
        auto& dialogs = *s.platform.dialogs;
        s.model.presentSaveShowPanel(false);
        QCOMPARE(s.alerts(), QStringList{"Nothing to save: Open a PDF or folder first."});
        QVERIFY(dialogs.saveRequests.empty());

        s.model.replacePlaylist({s.pdf("Opening Night.pdf")});
        dialogs.saveReplies.push_back(std::nullopt);
        s.model.presentSaveShowPanel(false);
        QCOMPARE(dialogs.saveRequests.size(), std::size_t(1));
        const auto& options = dialogs.saveRequests[0];
        QCOMPARE((QStringList{options.title, options.suggestedName}), (QStringList{"Save Show", "Opening Night"}));
        QCOMPARE(options.nameFilters.size(), qsizetype(1));
        QVERIFY(options.nameFilters[0].endsWith("(*.brelvonic)"));
        QVERIFY(!s.model.showFileURL());

        // A name typed without the extension gets it.
        dialogs.saveReplies.push_back(s.file("gig"));
        s.model.presentSaveShowPanel(false);
        const QString saved = s.file("gig.brelvonic");
        QCOMPARE(s.model.showFileURL(), std::optional<QString>(saved));
        QVERIFY(QFileInfo::exists(saved));

        // Save goes back to the same file without a panel.
        s.model.addBookmark("Intro", 1);
        s.model.presentSaveShowPanel(false);
        QCOMPARE(dialogs.saveRequests.size(), std::size_t(2));
        QVERIFY(readAll(saved).contains("\"Intro\""));

        // Save As always asks, proposing the show's name.
        dialogs.saveReplies.push_back(s.file("encore.BRELVONIC"));
        s.model.presentSaveShowPanel(true);
        QCOMPARE(dialogs.saveRequests.size(), std::size_t(3));
        QCOMPARE(dialogs.saveRequests[2].suggestedName, QString("gig"));
        QCOMPARE(s.model.showFileURL(), std::optional<QString>(s.file("encore.BRELVONIC")));
        QCOMPARE(s.alerts().size(), qsizetype(1));
    }

    void openPanelOpensTheChosenShow()
    {
        ModelWithFolder s;
        const QString a = s.pdf("a.pdf");
        s.model.replacePlaylist({a});
        const QString showPath = s.file("Gig.Brelvonic");
        s.model.saveShow(showPath);
        s.model.closeDocument();

        auto& dialogs = *s.platform.dialogs;
        s.model.presentOpenShowPanel();
        QVERIFY(s.model.playlist().empty());
        dialogs.openReplies.push_back({showPath});
        s.model.presentOpenShowPanel();
        QCOMPARE(dialogs.openRequests.size(), std::size_t(2));
        const auto& options = dialogs.openRequests[0];
        QCOMPARE((QStringList{options.title, options.prompt}), (QStringList{"Open Show", "Open"}));
        QVERIFY(!options.multiple);
        QVERIFY(!options.directories);
        QCOMPARE(options.nameFilters.size(), qsizetype(1));
        QVERIFY(options.nameFilters[0].endsWith("(*.brelvonic)"));
        QCOMPARE(s.paths(), (QStringList{a}));
        QCOMPARE(s.model.showFileURL(), std::optional<QString>(showPath));

        QVERIFY(AppModel::isShowFile(showPath));
        QVERIFY(AppModel::isShowFile("/x/gig.BRELVONIC"));
        for (const char* other : {"/x/gig.brelvonic.pdf", "/x/brelvonic", "/x/gig.brelvonics"})
            QVERIFY2(!AppModel::isShowFile(other), other);
    }
};

QTEST_MAIN(ShowFileTest)
#include "tst_ShowFile.moc"
