#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "show/SavedShow.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"

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

    static QStringList itemPaths(const QString& showPath)
    {
        QStringList out;
        for (const auto& item : readJson(showPath).value("items").toArray())
            out << item.toObject().value("path").toString();
        return out;
    }

    static QStringList urls(const AppModel& model)
    {
        QStringList out;
        for (const auto& entry : model.playlist())
            out << entry.url;
        return out;
    }

    static QString pdfIn(const QDir& dir, const QString& relative, int pages = 3)
    {
        const QString path = dir.filePath(relative);
        QDir().mkpath(QFileInfo(path).absolutePath());
        TestPdf::write(path, pages, TestPdf::widescreen, relative);
        return path;
    }

    // A show as the program writes it, with settings that differ from the defaults.
    static SavedShow sampleShow()
    {
        SavedShow show;
        show.aspect = "r4x3";
        show.contentFit = "cover";
        show.customWidth = 1280;
        show.customHeight = 720;
        show.transitionStyle = "none";
        show.transitionDuration = 0.8;
        show.plannedDuration = 2700;
        show.hideOutputCursor = false;
        show.markRed = 0.2;
        show.markGreen = 0.25;
        show.markBlue = 1;
        return show;
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
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        FakePlatform platform;
        AppModel model(platform.services());
        const QString a = pdfIn(root, "Shows/slides/a.pdf");
        const QString b = pdfIn(root, "Other/b.pdf");
        const QString c = pdfIn(root, "Shows2/c.pdf");
        model.replacePlaylist({a, b, c});
        const QString show = root.filePath("Shows/gig.brelvonic");
        model.saveShow(show);

        QVERIFY(platform.dialogs->alerts.empty());
        QCOMPARE(itemPaths(show), (QStringList{"slides/a.pdf", b, c}));
        QVERIFY(QDir::isAbsolutePath(b));
        // No bookmarks are made on this platform, so the key is left out.
        for (const auto& value : readJson(show).value("items").toArray())
            QVERIFY(!value.toObject().contains("bookmark"));
        QCOMPARE(model.showFileURL(), std::optional<QString>(show));
        QCOMPARE(model.recentFiles().value(0), show);

        // The prefix test works on the cleaned paths and includes the slash.
        QCOMPARE(AppModel::portablePath("/Shows2/x.pdf", "/Shows/gig.brelvonic"), QString("/Shows2/x.pdf"));
        QCOMPARE(AppModel::portablePath("/Shows/./deck/../x.pdf", "/Shows/gig.brelvonic"), QString("x.pdf"));
        QCOMPARE(AppModel::portablePath("/Shows", "/Shows/gig.brelvonic"), QString("/Shows"));
    }

    void encodingIsSortedOneMemberPerLineAndByteStable()
    {
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({pdfIn(root, "a.pdf", 6), pdfIn(root, "b.pdf")});
        model.addBookmark("Chorus", 4);
        model.addBookmark("Intro", 0);
        model.goToPage(2);
        model.setCurrentNote(" Pause ");
        model.saveShow(root.filePath("one.brelvonic"));
        model.saveShow(root.filePath("two.brelvonic"));
        const QByteArray first = readAll(root.filePath("one.brelvonic"));
        QVERIFY(!first.isEmpty());
        QCOMPARE(readAll(root.filePath("two.brelvonic")), first);

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

        const QJsonObject json = readJson(root.filePath("one.brelvonic"));
        QCOMPARE(json.value("formatVersion").toInteger(), qint64(1));
        const QJsonObject firstItem = json.value("items").toArray().at(0).toObject();
        QCOMPARE(firstItem.value("notes").toObject(), (QJsonObject{{"2", " Pause "}}));
        const QJsonArray cues = firstItem.value("cues").toArray();
        QCOMPARE(cues.size(), 2);
        const QString id = cues.at(0).toObject().value("id").toString();
        QCOMPARE(id, model.playlist()[0].cues[0].id.toString(QUuid::WithoutBraces).toUpper());
        QCOMPARE(cues.at(1).toObject().value("title").toString(), QString("Chorus"));
    }

    void recordsSurviveEncodeAndDecode()
    {
        SavedShow show = sampleShow();
        SavedShowItem first = item("slides/a.pdf");
        first.bookmark = QByteArray("\x00\x01\xfe bookmark", 12);
        first.cues = {{QUuid::createUuid(), 4, "Chorus"}, {QUuid::createUuid(), 0, "Intro"}};
        first.notes = {{"0", "Lights down"}, {"4", " Pause "}};
        show.items = {first, item("/elsewhere/b.pdf")};
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
        const QJsonObject good = QJsonDocument::fromJson([] {
            SavedShow show = sampleShow();
            SavedShowItem one = item("a.pdf");
            one.cues = {{QUuid::createUuid(), 1, "Intro"}};
            one.notes = {{"1", "note"}};
            show.items = {one};
            return show.encode();
        }()).object();
        QVERIFY(SavedShow::decode(QJsonDocument(good).toJson()));

        const auto changed = [&](const std::function<void(QJsonObject&)>& edit) {
            QJsonObject root = good;
            edit(root);
            return QJsonDocument(root).toJson();
        };
        const auto changedItem = [&](const std::function<void(QJsonObject&)>& edit) {
            return changed([&](QJsonObject& root) {
                QJsonArray items = root.value("items").toArray();
                QJsonObject first = items.at(0).toObject();
                edit(first);
                items[0] = first;
                root.insert("items", items);
            });
        };
        const auto changedCue = [&](const std::function<void(QJsonObject&)>& edit) {
            return changedItem([&](QJsonObject& itemObject) {
                QJsonArray cues = itemObject.value("cues").toArray();
                QJsonObject cue = cues.at(0).toObject();
                edit(cue);
                cues[0] = cue;
                itemObject.insert("cues", cues);
            });
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
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({pdfIn(root, "a.pdf")});
        model.saveShow(root.filePath("before.brelvonic"));
        const auto playlist = model.playlist();
        const auto recents = model.recentFiles();
        const QString damaged = root.filePath("damaged.brelvonic");
        QVERIFY(writeAll(damaged, json));
        model.openShow(damaged);
        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(1));
        QCOMPARE(platform.dialogs->alerts[0].title, QString("Damaged show file"));
        QCOMPARE(platform.dialogs->alerts[0].text, QString("damaged.brelvonic"));
        QCOMPARE(model.playlist(), playlist);
        QCOMPARE(model.aspect(), AspectMode::fillDisplay);
        QCOMPARE(model.showFileURL(), std::optional<QString>(root.filePath("before.brelvonic")));
        QCOMPARE(model.recentFiles(), recents);
    }

    void unreadableShowFileAlertsWithItsName()
    {
        QTemporaryDir tmp;
        FakePlatform platform;
        AppModel model(platform.services());
        model.openShow(QDir(tmp.path()).filePath("gone.brelvonic"));
        QDir(tmp.path()).mkdir("folder.brelvonic");
        model.openShow(QDir(tmp.path()).filePath("folder.brelvonic"));
        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(2));
        QCOMPARE(platform.dialogs->alerts[0].title, QString("Couldn’t read the show"));
        QCOMPARE(platform.dialogs->alerts[0].text, QString("gone.brelvonic"));
        QCOMPARE(platform.dialogs->alerts[1].text, QString("folder.brelvonic"));
        QVERIFY(model.playlist().empty());
    }

    // Only regular files are read: a pipe would hold the console until some
    // program writes to it, a device could feed it without end.
    void aShowThatIsNoRegularFileIsNotRead()
    {
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        const QString pipe = root.filePath("pipe.brelvonic");
        QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QVERIFY(QFile::link("/dev/null", root.filePath("device.brelvonic")));

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
        FakePlatform platform;
        AppModel model(platform.services());
        model.openShow(pipe);
        model.openShow(root.filePath("device.brelvonic"));
        done = true;
        writer.join();

        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(2));
        QCOMPARE(platform.dialogs->alerts[0].title, QString("Couldn’t read the show"));
        QCOMPARE(platform.dialogs->alerts[0].text, QString("pipe.brelvonic"));
        QCOMPARE(platform.dialogs->alerts[1].title, QString("Couldn’t read the show"));
        QCOMPARE(platform.dialogs->alerts[1].text, QString("device.brelvonic"));
    }

    void noteNamesParseAsSignedDecimalIntegers()
    {
        SavedShowItem coded = item("a.pdf");
        coded.notes = {{"3", "three"}, {"x", "dropped"}, {"-1", "minus one"}};
        QCOMPARE(coded.notesByPage(), (std::map<qint64, QString>{{-1, "minus one"}, {3, "three"}}));

        QCOMPARE(parseNoteKey("+12"), std::optional<qint64>(12));
        QCOMPARE(parseNoteKey("007"), std::optional<qint64>(7));
        QCOMPARE(parseNoteKey("9223372036854775807"), std::optional<qint64>(9223372036854775807LL));
        QCOMPARE(parseNoteKey("-9223372036854775808"), std::optional<qint64>(std::numeric_limits<qint64>::min()));
        for (const char* bad : {"", "+", "-", " 7", "7 ", "1.0", "1e3", "0x1f", "9223372036854775808",
                                   "--1", "\u0663" /* Arabic-Indic three */})
            QVERIFY2(!parseNoteKey(QString::fromUtf8(bad)), bad);

        // A hand-edited clash keeps the note under the name this program writes.
        SavedShowItem clash = item("a.pdf");
        clash.notes = {{"+7", "plus"}, {"07", "zero"}, {"7", "plain"}, {"+8", "plus eight"}, {"08", "zero eight"}};
        QCOMPARE(clash.notesByPage(), (std::map<qint64, QString>{{7, "plain"}, {8, "plus eight"}}));
    }

    void aShowOpensWithItsSetCuesNotesAndSettings()
    {
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        const QString a = pdfIn(root, "Shows/slides/a.pdf", 6);
        const QString b = pdfIn(root, "Other/b.pdf", 2);
        SavedShow show = sampleShow();
        SavedShowItem first = item("slides/a.pdf");
        // Written out of order: opening sorts by page, keeping equal pages in file order.
        const QUuid later = QUuid::createUuid();
        const QUuid earlier = QUuid::createUuid();
        first.cues = {{later, 5, "Outro"}, {earlier, 1, "Verse"}, {QUuid::createUuid(), 1, "Verse again"}};
        first.notes = {{"1", "Breathe"}, {"x", "dropped"}};
        show.items = {first, item(b)};
        const QString showPath = root.filePath("Shows/gig.brelvonic");
        QVERIFY(writeAll(showPath, show.encode()));

        FakePlatform platform;
        AppModel model(platform.services());
        model.annotationUndo.set({AnnotationUndo{}});
        model.openShow(showPath);
        QVERIFY(platform.dialogs->alerts.empty());
        QCOMPARE(urls(model), (QStringList{a, b}));
        QCOMPARE(model.playlistIndex(), 0);
        QCOMPARE(model.pageIndex(), 0);
        QCOMPARE(model.documentURL(), std::optional<QString>(a));
        const auto& cues = model.playlist()[0].cues;
        QCOMPARE(cues.size(), std::size_t(3));
        QCOMPARE(cues[0].id, earlier);
        QCOMPARE(cues[1].title, QString("Verse again"));
        QCOMPARE(cues[2].id, later);
        QCOMPARE(model.playlist()[0].notesByPage, (std::map<qint64, QString>{{1, "Breathe"}}));
        QVERIFY(model.playlist()[1].cues.empty());
        QCOMPARE(model.aspect(), AspectMode::r4x3);
        QCOMPARE(model.contentFit(), ContentFit::cover);
        QCOMPARE(model.customWidth(), 1280);
        QCOMPARE(model.customHeight(), 720);
        QCOMPARE(model.transitionStyle(), TransitionStyle::none);
        QCOMPARE(model.transitionDuration(), 0.8);
        QCOMPARE(model.plannedDuration(), 2700.0);
        QCOMPARE(model.hideOutputCursor(), false);
        QCOMPARE(model.markColor(), (MarkColor{0.2, 0.25, 1}));
        QCOMPARE(model.showFileURL(), std::optional<QString>(showPath));
        QVERIFY(model.annotationUndo().empty());
        QVERIFY(model.timerStartedAt());
        QCOMPARE(model.recentFiles().value(0), showPath);
        QCOMPARE(platform.preferences->values.value("aspect").toString(), QString("r4x3"));
    }

    void settingsTheModelCannotTakeKeepTheirValues()
    {
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        pdfIn(root, "a.pdf");
        SavedShow show = sampleShow();
        show.aspect = "r5x4";
        show.contentFit = "stretch";
        show.customWidth = 0;
        show.customHeight = 4294967296;
        show.transitionStyle = "wipe";
        show.transitionDuration = 0;
        show.plannedDuration = 0;
        show.items = {item("a.pdf")};
        const QString showPath = root.filePath("odd.brelvonic");
        QVERIFY(writeAll(showPath, show.encode()));

        FakePlatform platform;
        AppModel model(platform.services());
        model.aspect.set(AspectMode::r16x10);
        model.plannedDuration.set(600);
        model.openShow(showPath);
        QCOMPARE(model.playlist().size(), std::size_t(1));
        QCOMPARE(model.aspect(), AspectMode::r16x10);
        QCOMPARE(model.contentFit(), ContentFit::contain);
        QCOMPARE(model.customWidth(), 1920);
        QCOMPARE(model.customHeight(), 1080);
        QCOMPARE(model.transitionStyle(), TransitionStyle::fade);
        QCOMPARE(model.transitionDuration(), 0.45);
        QCOMPARE(model.plannedDuration(), 0.0);
    }

    // Settings equal to the current ones are not written: their observers
    // (output window, frame publisher) see no change.
    void equalSettingsDoNotNotify()
    {
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        pdfIn(root, "a.pdf");
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({root.filePath("a.pdf")});
        const QString same = root.filePath("same.brelvonic");
        model.saveShow(same);
        SavedShow other = sampleShow();
        other.items = {item("a.pdf")};
        const QString different = root.filePath("different.brelvonic");
        QVERIFY(writeAll(different, other.encode()));

        const auto settingsChange = [&](const QString& showPath) {
            bool changed = false;
            const auto tracker = obs::withTracking(
                [&] {
                    (void)model.aspect();
                    (void)model.contentFit();
                    (void)model.customWidth();
                    (void)model.customHeight();
                    (void)model.transitionStyle();
                    (void)model.transitionDuration();
                    (void)model.plannedDuration();
                    (void)model.hideOutputCursor();
                    (void)model.markColor();
                },
                [&] { changed = true; });
            model.openShow(showPath);
            return changed;
        };
        QVERIFY(!settingsChange(same));
        QCOMPARE(model.playlist().size(), std::size_t(1));
        QVERIFY(settingsChange(different));
        QVERIFY(!settingsChange(different));
        QVERIFY(platform.dialogs->alerts.empty());
    }

    void aShowMovedWithItsPdfsOpensAgain()
    {
        QTemporaryDir first;
        QTemporaryDir second;
        const QDir from(first.path());
        const QDir to(second.path());
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({pdfIn(from, "Shows/slides/a.pdf", 4), pdfIn(from, "Shows/b.pdf", 2)});
        model.addBookmark("Intro", 3);
        model.saveShow(from.filePath("Shows/gig.brelvonic"));

        QVERIFY(to.mkpath("Moved/slides"));
        for (const QString& name : QStringList{"gig.brelvonic", "slides/a.pdf", "b.pdf"})
            QVERIFY(QFile::rename(from.filePath(QString("Shows/") + name), to.filePath(QString("Moved/") + name)));

        FakePlatform other;
        AppModel reopened(other.services());
        reopened.openShow(to.filePath("Moved/gig.brelvonic"));
        QVERIFY(other.dialogs->alerts.empty());
        QCOMPARE(urls(reopened), (QStringList{to.filePath("Moved/slides/a.pdf"), to.filePath("Moved/b.pdf")}));
        QCOMPARE(reopened.playlist()[0].cues.size(), std::size_t(1));
        QCOMPARE(reopened.playlist()[0].cues[0].title, QString("Intro"));
        QCOMPARE(reopened.pageCount(), 4);
    }

    void missingPdfsAreLeftOutAndNamed()
    {
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        FakePlatform platform;
        AppModel model(platform.services());
        const QString a = pdfIn(root, "a.pdf");
        const QString b = pdfIn(root, "sub/b.pdf");
        const QString c = pdfIn(root, "c.pdf");
        model.replacePlaylist({a, b, c});
        const QString showPath = root.filePath("gig.brelvonic");
        model.saveShow(showPath);
        QVERIFY(QFile::remove(b));

        FakePlatform other;
        AppModel reopened(other.services());
        reopened.openShow(showPath);
        QCOMPARE(urls(reopened), (QStringList{a, c}));
        QCOMPARE(reopened.playlistIndex(), 0);
        QCOMPARE(reopened.pageIndex(), 0);
        QCOMPARE(reopened.showFileURL(), std::optional<QString>(showPath));
        QCOMPARE(other.dialogs->alerts.size(), std::size_t(1));
        QCOMPARE(other.dialogs->alerts[0].title, QString("Some PDFs were not found"));
        QCOMPARE(other.dialogs->alerts[0].text, QString("b.pdf"));

        // A file that is there but is no PDF is left out without being named missing.
        QVERIFY(QFile::remove(a));
        TestPdf::writeNotPdf(a);
        FakePlatform third;
        AppModel again(third.services());
        again.openShow(showPath);
        QCOMPARE(urls(again), (QStringList{c}));
        QCOMPARE(third.dialogs->alerts.size(), std::size_t(2));
        QCOMPARE(third.dialogs->alerts[0].title, L10n::t("alert.pdf_open"));
        QCOMPARE(third.dialogs->alerts[1].text, QString("b.pdf"));
    }

    void aShowWithNothingToOpenChangesNothing()
    {
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        FakePlatform platform;
        AppModel model(platform.services());
        const QString loaded = pdfIn(root, "loaded.pdf");
        model.replacePlaylist({loaded});
        model.aspect.set(AspectMode::r1x1);

        SavedShow show = sampleShow();
        show.items = {item("gone/c.pdf"), item(root.filePath("d.pdf")), item("e.pdf")};
        const QString showPath = root.filePath("lost.brelvonic");
        QVERIFY(writeAll(showPath, show.encode()));
        model.openShow(showPath);
        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(1));
        QCOMPARE(platform.dialogs->alerts[0].title, QString("Show files not found"));
        QCOMPARE(platform.dialogs->alerts[0].text, QString("c.pdf\nd.pdf\ne.pdf"));
        QCOMPARE(urls(model), (QStringList{loaded}));
        QCOMPARE(model.aspect(), AspectMode::r1x1);
        QCOMPARE(model.plannedDuration(), 0.0);
        QVERIFY(!model.showFileURL());

        // An empty show names the show file itself.
        show.items.clear();
        const QString emptyShow = root.filePath("empty.brelvonic");
        QVERIFY(writeAll(emptyShow, show.encode()));
        model.openShow(emptyShow);
        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(2));
        QCOMPARE(platform.dialogs->alerts[1].text, QString("empty.brelvonic"));
        QCOMPARE(urls(model), (QStringList{loaded}));
    }

    // Hand-edited paths: an empty one means the show's folder, which is no
    // PDF; a trailing slash still names the last part. No alert goes blank.
    void handEditedPathsAreNamedByTheirLastPart()
    {
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        QVERIFY(root.mkpath("Shows"));
        SavedShow show = sampleShow();
        show.items = {item(""), item("gone/")};
        const QString showPath = root.filePath("Shows/odd.brelvonic");
        QVERIFY(writeAll(showPath, show.encode()));

        FakePlatform platform;
        AppModel model(platform.services());
        model.openShow(showPath);
        QVERIFY(model.playlist().empty());
        QVERIFY(!platform.dialogs->alerts.empty());
        for (const auto& alert : platform.dialogs->alerts)
            QVERIFY2(!alert.text.trimmed().isEmpty(), qPrintable(alert.title));
        QCOMPARE(platform.dialogs->alerts.back().title, QString("Show files not found"));
        QCOMPARE(platform.dialogs->alerts.back().text, QString("gone"));
    }

    void aFailedSaveKeepsTheEarlierFile()
    {
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({pdfIn(root, "a.pdf")});
        const QString earlier = root.filePath("gig.brelvonic");
        model.saveShow(earlier);
        const QByteArray before = readAll(earlier);
        const QStringList recents = model.recentFiles();

        model.addBookmark("Intro", 0);
        model.saveShow(root.filePath("no such folder/gig.brelvonic"));
        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(1));
        QCOMPARE(platform.dialogs->alerts[0].title, QString("Couldn’t save the show"));
        QVERIFY(!platform.dialogs->alerts[0].text.isEmpty());
        QCOMPARE(model.showFileURL(), std::optional<QString>(earlier));
        QCOMPARE(model.recentFiles(), recents);

        // A folder in the way of the show cannot be replaced by it.
        QVERIFY(root.mkpath("taken.brelvonic/inside"));
        model.saveShow(root.filePath("taken.brelvonic"));
        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(2));
        QVERIFY(QFileInfo(root.filePath("taken.brelvonic/inside")).isDir());
        QCOMPARE(readAll(earlier), before);
        QCOMPARE(model.showFileURL(), std::optional<QString>(earlier));
    }

    void savePanelAsksOnlyWhenNeeded()
    {
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        FakePlatform platform;
        AppModel model(platform.services());

        model.presentSaveShowPanel(false);
        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(1));
        QCOMPARE(platform.dialogs->alerts[0].title, QString("Nothing to save"));
        QCOMPARE(platform.dialogs->alerts[0].text, QString("Open a PDF or folder first."));
        QVERIFY(platform.dialogs->saveRequests.empty());

        model.replacePlaylist({pdfIn(root, "Opening Night.pdf")});
        platform.dialogs->saveReplies.push_back(std::nullopt);
        model.presentSaveShowPanel(false);
        QCOMPARE(platform.dialogs->saveRequests.size(), std::size_t(1));
        const auto& options = platform.dialogs->saveRequests[0];
        QCOMPARE(options.title, QString("Save Show"));
        QCOMPARE(options.suggestedName, QString("Opening Night"));
        QCOMPARE(options.nameFilters.size(), qsizetype(1));
        QVERIFY(options.nameFilters[0].endsWith("(*.brelvonic)"));
        QVERIFY(!model.showFileURL());

        // A name typed without the extension gets it.
        platform.dialogs->saveReplies.push_back(root.filePath("gig"));
        model.presentSaveShowPanel(false);
        const QString saved = root.filePath("gig.brelvonic");
        QCOMPARE(model.showFileURL(), std::optional<QString>(saved));
        QVERIFY(QFileInfo::exists(saved));

        // Save goes back to the same file without a panel.
        model.addBookmark("Intro", 1);
        model.presentSaveShowPanel(false);
        QCOMPARE(platform.dialogs->saveRequests.size(), std::size_t(2));
        QVERIFY(readAll(saved).contains("\"Intro\""));

        // Save As always asks, proposing the show's name.
        platform.dialogs->saveReplies.push_back(root.filePath("encore.BRELVONIC"));
        model.presentSaveShowPanel(true);
        QCOMPARE(platform.dialogs->saveRequests.size(), std::size_t(3));
        QCOMPARE(platform.dialogs->saveRequests[2].suggestedName, QString("gig"));
        QCOMPARE(model.showFileURL(), std::optional<QString>(root.filePath("encore.BRELVONIC")));
        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(1));
    }

    void openPanelOpensTheChosenShow()
    {
        QTemporaryDir tmp;
        const QDir root(tmp.path());
        FakePlatform platform;
        AppModel model(platform.services());
        const QString a = pdfIn(root, "a.pdf");
        model.replacePlaylist({a});
        const QString showPath = root.filePath("Gig.Brelvonic");
        model.saveShow(showPath);
        model.closeDocument();

        model.presentOpenShowPanel();
        QVERIFY(model.playlist().empty());
        platform.dialogs->openReplies.push_back({showPath});
        model.presentOpenShowPanel();
        QCOMPARE(platform.dialogs->openRequests.size(), std::size_t(2));
        const auto& options = platform.dialogs->openRequests[0];
        QCOMPARE(options.title, QString("Open Show"));
        QCOMPARE(options.prompt, QString("Open"));
        QVERIFY(!options.multiple);
        QVERIFY(!options.directories);
        QCOMPARE(options.nameFilters.size(), qsizetype(1));
        QVERIFY(options.nameFilters[0].endsWith("(*.brelvonic)"));
        QCOMPARE(urls(model), (QStringList{a}));
        QCOMPARE(model.showFileURL(), std::optional<QString>(showPath));

        QVERIFY(AppModel::isShowFile(showPath));
        QVERIFY(AppModel::isShowFile("/x/gig.BRELVONIC"));
        QVERIFY(!AppModel::isShowFile("/x/gig.brelvonic.pdf"));
        QVERIFY(!AppModel::isShowFile("/x/brelvonic"));
        QVERIFY(!AppModel::isShowFile("/x/gig.brelvonics"));
    }
};

QTEST_MAIN(ShowFileTest)
#include "tst_ShowFile.moc"
