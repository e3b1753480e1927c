#include "platform/XbelRecentDocuments.h"
#include "support/SmallDisk.h"

#include <QDir>
#include <QFileInfo>

#include <QFile>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

namespace {

// One item of another application, as the desktop's own writers store it.
QByteArray othersItem(const char* href, const char* when, const char* mime, const char* app, const char* count)
{
    const QByteArray at = QByteArray("2026-01-0") + when + "T10:00:00.000000Z";
    return QByteArray("  <bookmark href=\"") + href + "\" added=\"" + at + "\" modified=\"" + at + "\" visited=\"" + at
        + "\">\n    <info>\n      <metadata owner=\"http://freedesktop.org\">\n        <mime:mime-type type=\"" + mime
        + "\"/>\n        <bookmark:applications>\n          <bookmark:application name=\"" + app
        + "\" exec=\"&apos;" + QByteArray(app).toLower() + " %u&apos;\" modified=\"" + at + "\" count=\"" + count
        + "\"/>\n        </bookmark:applications>\n      </metadata>\n    </info>\n  </bookmark>\n";
}

// A store that only other applications wrote to: a document of a word
// processor and a PDF of a viewer, whose href the tests replace.
const QByteArray othersStore = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                               "<xbel version=\"1.0\"\n"
                               "      xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\"\n"
                               "      xmlns:mime=\"http://www.freedesktop.org/standards/shared-mime-info\"\n"
                               ">\n"
    + othersItem("file:///home/op/Music/set%20list.odt", "2", "application/vnd.oasis.opendocument.text", "Writer", "3")
    + othersItem("file:///SHARED", "3", "application/pdf", "Viewer", "1") + "</xbel>\n";

QString read(const QString& path)
{
    QFile f(path);
    f.open(QIODevice::ReadOnly);
    return QString::fromUtf8(f.readAll());
}

void write(const QString& path, const QByteArray& text)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(text);
}

bool wellFormed(const QString& path)
{
    QXmlStreamReader xml(read(path));
    while (!xml.atEnd())
        xml.readNext();
    return !xml.hasError();
}

// The text of the first bookmark element whose href contains `marker`.
QString bookmarkText(const QString& store, const QString& marker)
{
    const QString text = read(store);
    const qsizetype at = text.indexOf(marker);
    if (at < 0)
        return {};
    const qsizetype start = text.lastIndexOf(QStringLiteral("<bookmark "), at);
    const qsizetype end = text.indexOf(QStringLiteral("</bookmark>"), at) + 11;
    return text.mid(start, end - start);
}

}

class XbelRecentDocumentsTest : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

private slots:
    void othersItemsSurviveNoteAndClear()
    {
        const QString store = dir.filePath("others/recently-used.xbel");
        QDir().mkpath(dir.filePath("others"));
        QString original = QString::fromUtf8(othersStore);
        const QString shared = dir.filePath("shared.pdf");
        original.replace("file:///SHARED", QUrl::fromLocalFile(shared).toString());
        write(store, original.toUtf8());
        const QString writerItem = bookmarkText(store, "set%20list.odt");
        QVERIFY(!writerItem.isEmpty());

        XbelRecentDocuments recents(store);
        QVERIFY(recents.list().isEmpty());  // nothing of ours yet
        const QString a = dir.filePath("a.pdf");
        const QString b = dir.filePath("Show & Tell.brelvonic");
        recents.note(a);
        recents.note(b);
        recents.note(shared);
        recents.note(a);
        QVERIFY(wellFormed(store));
        QCOMPARE(recents.list(), (QStringList{a, shared, b}));
        QCOMPARE(bookmarkText(store, "set%20list.odt"), writerItem);  // byte for byte
        QVERIFY(bookmarkText(store, "shared.pdf").contains("name=\"Viewer\""));
        QVERIFY(bookmarkText(store, "a.pdf").contains("count=\"2\""));
        QVERIFY(bookmarkText(store, "Show%20&amp;%20Tell").contains("application/x-brelvonic-show"));

        recents.clear();
        QVERIFY(wellFormed(store));
        QVERIFY(recents.list().isEmpty());
        QCOMPARE(bookmarkText(store, "set%20list.odt"), writerItem);
        const QString sharedAfter = bookmarkText(store, "shared.pdf");
        QVERIFY(sharedAfter.contains("name=\"Viewer\""));
        QVERIFY(!sharedAfter.contains("PDF Brelvonic"));
        QVERIFY(bookmarkText(store, "a.pdf").isEmpty());
    }

    void missingEmptyAndDamagedStores()
    {
        const QString missing = dir.filePath("new/deeper/recently-used.xbel");
        XbelRecentDocuments fresh(missing);
        QVERIFY(fresh.list().isEmpty());
        fresh.note(dir.filePath("x.pdf"));
        QCOMPARE(fresh.list(), QStringList{dir.filePath("x.pdf")});
        QVERIFY(wellFormed(missing));

        const QString empty = dir.filePath("empty.xbel");
        write(empty, "");
        XbelRecentDocuments blank(empty);
        QVERIFY(blank.list().isEmpty());

        // Far larger than any store (sparse): neither read nor rewritten,
        // since what it holds could not be kept.
        QFile huge(dir.filePath("huge.xbel"));
        QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(qint64(4) << 30));
        huge.close();
        XbelRecentDocuments tooLarge(huge.fileName());
        tooLarge.note(dir.filePath("z.pdf"));
        tooLarge.clear();
        QVERIFY(tooLarge.list().isEmpty());
        QCOMPARE(QFileInfo(huge.fileName()).size(), qint64(4) << 30);

        // Cut off in the middle of the second bookmark: the first is readable
        // and must survive the repair that the next write makes.
        const QString damaged = dir.filePath("damaged.xbel");
        const QByteArray& whole = othersStore;
        write(damaged, whole.left(whole.indexOf("file:///SHARED") + 20));
        XbelRecentDocuments repaired(damaged);
        QVERIFY(repaired.list().isEmpty());
        repaired.note(dir.filePath("y.pdf"));
        QVERIFY(wellFormed(damaged));
        QVERIFY(read(damaged).contains("name=\"Writer\""));
        QCOMPARE(repaired.list(), QStringList{dir.filePath("y.pdf")});
    }

    void foreignNamespacesAndElementsAreKept()
    {
        // A store from another writer: its own namespace, used inside a
        // bookmark, and elements beside the bookmarks.
        const QString store = dir.filePath("foreign.xbel");
        QString text = QString::fromUtf8(othersStore);
        text.replace("<xbel version=\"1.0\"\n", "<xbel version=\"1.0\" xmlns:tag=\"urn:example:tags\"\n");
        text.replace("<mime:mime-type type=\"application/pdf\"/>",
                     "<mime:mime-type type=\"application/pdf\"/>\n        <tag:label>rehearsal</tag:label>");
        text.replace("  <bookmark href=\"file:///home", "  <title>Desk</title>\n  <separator/>\n  <bookmark href=\"file:///home");
        write(store, text.toUtf8());
        QVERIFY(wellFormed(store));
        const QString tagged = bookmarkText(store, "SHARED");
        QVERIFY(tagged.contains("tag:label"));

        XbelRecentDocuments recents(store);
        recents.note(dir.filePath("c.pdf"));
        recents.clear();
        QVERIFY(wellFormed(store));
        QCOMPARE(bookmarkText(store, "SHARED"), tagged);
        QVERIFY(read(store).contains("<title>Desk</title>"));
        QVERIFY(read(store).contains("<separator/>"));
    }

    // Stores whose root only seems to declare what our items use, or that
    // name things in ways of their own: what is noted reads back.
    void everyStoreReadsBackWhatWasNoted()
    {
        const QByteArray header = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        const QByteArray declared = " xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\""
                                    " xmlns:mime=\"http://www.freedesktop.org/standards/shared-mime-info\"";
        const std::vector<std::pair<const char*, QByteArray>> stores{
            {"value naming both", header + "<xbel version=\"1.0\" title=\"xmlns:mime= xmlns:bookmark=\"></xbel>\n"},
            {"value naming one", header + "<xbel version=\"1.0\" xmlns:bookmark=\"urn:b\" note=\"xmlns:mime=\"/>\n"},
            {"prefixed root", header + "<x:xbel xmlns:x=\"urn:x\" version=\"1.0\"" + declared + "></x:xbel>\n"},
            {"entity of a doctype", header + "<!DOCTYPE xbel [<!ENTITY who \"Writer\">]>\n<xbel version=\"1.0\"" + declared
                 + ">\n" + othersItem("file:///home/op/a.odt", "2", "text/plain", "&who;", "1") + "</xbel>\n"},
        };
        for (const auto& [name, text] : stores) {
            const QString store = dir.filePath(QStringLiteral("odd-%1.xbel").arg(name));
            write(store, text);
            XbelRecentDocuments recents(store);
            recents.note(dir.filePath("a.pdf"));
            recents.note(dir.filePath("b.pdf"));
            QVERIFY2(wellFormed(store), name);
            QCOMPARE(recents.list(), (QStringList{dir.filePath("b.pdf"), dir.filePath("a.pdf")}));
            if (text.contains("&who;"))
                QVERIFY2(read(store).contains("&who;"), name);
        }
    }

    // A full disk once left the shared store empty, losing every program's items.
    void aFullDiskKeepsTheStoreAsItWas()
    {
        if (::geteuid() != 0)
            QSKIP("mounting a small disk needs root");
        SmallDisk disk;
        QVERIFY(disk.mounted());
        const QString store = disk.file("recently-used.xbel");
        write(store, othersStore);
        XbelRecentDocuments recents(store);
        recents.note("/shows/a.pdf");
        const QString before = read(store);
        QVERIFY(disk.fill());
        for (int i = 0; i < 40; ++i)  // longer than any space a page leaves
            recents.note(QStringLiteral("/shows/a long name to grow the store by quite a bit %1.pdf").arg(i));
        QCOMPARE(read(store), before);
        QCOMPARE(recents.list(), QStringList{"/shows/a.pdf"});
        // No temporary file is left beside it.
        QCOMPARE(QDir(disk.path()).entryList(QDir::Files | QDir::Hidden), (QStringList{".filler", "recently-used.xbel"}));
    }

    void damagedStoreForgetsOurItemsButNotOthers()
    {
        // Our item and the writer's item are readable; the file breaks after them.
        const QString store = dir.filePath("ours-damaged.xbel");
        XbelRecentDocuments recents(store);
        write(store, othersStore);
        const QString old = dir.filePath("old.pdf");
        recents.note(old);
        QCOMPARE(recents.list(), QStringList{old});
        QByteArray broken = read(store).toUtf8();
        broken.chop(QByteArray("</xbel>\n").size());
        broken += "  <bookmark href=\"file:///cut";
        write(store, broken);

        QVERIFY(recents.list().isEmpty());
        const QString fresh = dir.filePath("fresh.pdf");
        recents.note(fresh);
        QVERIFY(wellFormed(store));
        QCOMPARE(recents.list(), QStringList{fresh});
        QVERIFY(read(store).contains("name=\"Writer\""));
        QVERIFY(read(store).contains("name=\"Viewer\""));
        QVERIFY(bookmarkText(store, "old.pdf").isEmpty());
    }

    void othersItemsWithoutApplicationsTakeOurRegistration()
    {
        // Items that no program is registered with: one with metadata but no
        // applications, one with no info at all.
        const QString store = dir.filePath("bare.xbel");
        const QString listed = dir.filePath("listed.pdf");
        const QString plain = dir.filePath("plain.pdf");
        QString text = QString::fromUtf8(othersStore);
        text.replace("</xbel>",
                     "  <bookmark href=\"" + QUrl::fromLocalFile(listed).toString()
                         + "\" added=\"2026-01-04T10:00:00Z\" modified=\"2026-01-04T10:00:00Z\" "
                           "visited=\"2026-01-04T10:00:00Z\">\n    <title>Listed</title>\n    <info>\n"
                           "      <metadata owner=\"http://freedesktop.org\">\n"
                           "        <mime:mime-type type=\"application/pdf\"/>\n      </metadata>\n    </info>\n"
                           "  </bookmark>\n"
                           "  <bookmark href=\"" + QUrl::fromLocalFile(plain).toString()
                         + "\" added=\"2026-01-04T10:00:00Z\" modified=\"2026-01-04T10:00:00Z\" "
                           "visited=\"2026-01-04T10:00:00Z\"/>\n</xbel>");
        write(store, text.toUtf8());
        QVERIFY(wellFormed(store));

        XbelRecentDocuments recents(store);
        recents.note(listed);
        recents.note(plain);
        QVERIFY(wellFormed(store));
        QCOMPARE(recents.list(), (QStringList{plain, listed}));
        QVERIFY(bookmarkText(store, "listed.pdf").contains("<title>Listed</title>"));
        QVERIFY(bookmarkText(store, "plain.pdf").contains("application/pdf"));

        // Clearing takes our registration back out and leaves the items.
        recents.clear();
        QVERIFY(wellFormed(store));
        QVERIFY(recents.list().isEmpty());
        QVERIFY(read(store).contains("<title>Listed</title>"));
        QVERIFY(read(store).contains("name=\"Writer\""));
    }

    void aNewStoreIsPrivateAndAnOldOneKeepsItsMode()
    {
        // The list tells what the operator opened: like the desktop's own
        // writers, a store made here is readable by its owner only.
        const QFileDevice::Permissions others = QFileDevice::ReadGroup | QFileDevice::WriteGroup
            | QFileDevice::ReadOther | QFileDevice::WriteOther;
        const QString made = dir.filePath("private/recently-used.xbel");
        XbelRecentDocuments fresh(made);
        fresh.note(dir.filePath("a.pdf"));
        QVERIFY(QFile::exists(made));
        QCOMPARE(QFile::permissions(made) & others, QFileDevice::Permissions());
        QVERIFY(QFile::permissions(made) & QFileDevice::ReadOwner);

        // A store that someone chose to share stays shared.
        const QString shared = dir.filePath("shared.xbel");
        write(shared, othersStore);
        QFile::setPermissions(shared, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup);
        XbelRecentDocuments kept(shared);
        kept.note(dir.filePath("b.pdf"));
        QCOMPARE(QFile::permissions(shared) & others, QFileDevice::Permissions(QFileDevice::ReadGroup));
    }

    void listHoldsTheTenNewest()
    {
        XbelRecentDocuments recents(dir.filePath("ten.xbel"));
        for (int i = 0; i < 12; ++i)
            recents.note(dir.filePath(QStringLiteral("%1.pdf").arg(i)));
        const QStringList list = recents.list();
        QCOMPARE(list.size(), 10);
        QCOMPARE(list.front(), dir.filePath("11.pdf"));
        QCOMPARE(list.back(), dir.filePath("2.pdf"));
    }
};

QTEST_MAIN(XbelRecentDocumentsTest)
#include "tst_XbelRecentDocuments.moc"
