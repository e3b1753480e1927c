#include "app/HandOverInbox.h"
#include "app/SingleInstance.h"
#include "support/TestPdf.h"

#include <QDir>
#include <QEventLoop>
#include <QLocalSocket>
#include <QProcess>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>
#include <QtEndian>
#include <QtTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <memory>

namespace {

constexpr int patience = 30000;  // ms; a loaded machine starts a program slowly

QByteArray header(quint32 length)
{
    QByteArray bytes("PBRV");
    char size[4];
    qToBigEndian(length, size);
    return bytes + QByteArray(size, 4);
}

QByteArray withPayload(const QByteArray& payload)
{
    return header(static_cast<quint32>(payload.size())) + payload;
}

// What a crash leaves: a bound socket file that nobody serves.
bool leaveStaleSocket(const QString& path)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (fd < 0)
        return false;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof(address.sun_path) - 1);
    const bool bound = ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    ::close(fd);
    return bound && QFileInfo::exists(path);
}

// A client that sends raw bytes and sees whether the server hangs up.
struct RawClient {
    QLocalSocket socket;
    QByteArray answer;

    explicit RawClient(const QString& name)
    {
        QObject::connect(&socket, &QLocalSocket::readyRead, &socket, [this] { answer += socket.readAll(); });
        socket.connectToServer(name);
    }
    bool send(const QByteArray& bytes)
    {
        if (!socket.waitForConnected(patience))
            return false;
        socket.write(bytes);
        return socket.waitForBytesWritten(patience);
    }
    bool hungUp() const { return socket.state() == QLocalSocket::UnconnectedState; }
};

// The real program, started with a home of its own so that the user's
// preferences, recent files and running copy are never touched.
struct Program {
    QProcess process;
    QString out;

    Program(const QProcessEnvironment& environment, const QString& folder, const QStringList& arguments)
    {
        QObject::connect(&process, &QProcess::readyReadStandardOutput, &process,
                         [this] { out += QString::fromUtf8(process.readAllStandardOutput()); });
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(folder);
        process.setProcessChannelMode(QProcess::SeparateChannels);
        process.start(QStringLiteral(PDF_BRELVONIC_PATH), arguments);
    }
    ~Program()
    {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished(patience);
        }
    }
    bool says(const QString& line) const { return out.split(u'\n').contains(line); }
    bool endedWell()
    {
        const bool ended = process.state() == QProcess::NotRunning || process.waitForFinished(patience);
        return ended && process.error() == QProcess::UnknownError && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    }
};

}

class SingleInstanceTest : public QObject {
    Q_OBJECT

private slots:
    void messagesAreCheckedBeforeTheyAreTaken()
    {
        QStringList paths;
        const QByteArray message = SingleInstance::encode({"/shows/a.pdf", "/shows/Gig Night.brelvonic"});
        QCOMPARE(SingleInstance::readMessage(message, paths), SingleInstance::Read::done);
        QCOMPARE(paths, (QStringList{"/shows/a.pdf", "/shows/Gig Night.brelvonic"}));
        // Every shorter piece waits for the rest.
        for (qsizetype n = 0; n < message.size(); ++n)
            QCOMPARE(SingleInstance::readMessage(message.first(n), paths), SingleInstance::Read::needMore);

        // Relative paths mean another folder, ":x" a resource inside the
        // program, and a NUL cuts the name: dropped, the rest kept clean.
        QCOMPARE(SingleInstance::readMessage(withPayload(R"(["a.pdf", "/b.pdf", ":c.pdf", "/d\u0000.pdf", "/e/../f.pdf", ""])"),
                                             paths),
                 SingleInstance::Read::done);
        QCOMPARE(paths, (QStringList{"/b.pdf", "/f.pdf"}));
        QCOMPARE(SingleInstance::readMessage(SingleInstance::encode({}), paths), SingleInstance::Read::done);
        QVERIFY(paths.isEmpty());

        const QByteArray bad[] = {
            "GET / HTTP/1.1\r\n",  // not ours, told by the first byte
            "PX",                   // ...or as soon as it differs
            header(quint32(SingleInstance::maxPayload) + 1),
            header(0xffffffffu),
            withPayload("not json"),
            withPayload(R"({"files": ["/a.pdf"]})"),
            withPayload(R"(["/a.pdf", 7])"),
            withPayload("[\"/a.pdf\""),
        };
        for (const QByteArray& bytes : bad) {
            paths = QStringList{"untouched"};
            QCOMPARE(SingleInstance::readMessage(bytes, paths), SingleInstance::Read::bad);
            QCOMPARE(paths, QStringList{"untouched"});
        }
    }

    // The socket file a crash leaves is taken over; then bad messages are
    // hung up on and good ones answered.
    void theServerHangsUpOnBadMessagesAndAnswersGoodOnes()
    {
        QTemporaryDir dir;
        const QString name = dir.filePath("test.socket");
        QVERIFY(leaveStaleSocket(name));
        SingleInstance server(name);
        QCOMPARE(server.claim({"/x.pdf"}), SingleInstance::Role::primary);
        QVERIFY(server.isListening());
        QSignalSpy received(&server, &SingleInstance::filesReceived);

        for (const QByteArray& bytes : {QByteArray("hello, world\n"), header(0x7fffffff), withPayload("[1, 2]")}) {
            RawClient junk(name);
            QVERIFY(junk.send(bytes));
            QTRY_VERIFY_WITH_TIMEOUT(junk.hungUp(), patience);
            QVERIFY(junk.answer.isEmpty());
        }
        QCOMPARE(received.count(), 0);

        // A good message in two writes.
        const QByteArray message = SingleInstance::encode({"/deck/one.pdf", "/deck/two.pdf"});
        RawClient client(name);
        QVERIFY(client.send(message.first(6)));
        QVERIFY(client.send(message.mid(6)));
        QTRY_COMPARE_WITH_TIMEOUT(received.count(), 1, patience);
        QCOMPARE(received.at(0).at(0).toStringList(), (QStringList{"/deck/one.pdf", "/deck/two.pdf"}));
        QTRY_COMPARE_WITH_TIMEOUT(client.answer, QByteArray("ok"), patience);
        QTRY_VERIFY_WITH_TIMEOUT(client.hungUp(), patience);
    }

    // Files that arrive while an alert or panel runs its own loop wait until
    // the operation behind it has finished, then come in order.
    void handedOverFilesWaitForTheDialogToClose()
    {
        const int mainLevel = QThread::currentThread()->loopLevel();
        QStringList events;
        HandOverInbox* inbox = nullptr;
        HandOverInbox box(
            [&](const QStringList& paths) {
                events << "take " + paths.join(u',');
                if (paths == QStringList{"/a.pdf"}) {
                    // Taking a.pdf raises an alert; b.pdf is handed over meanwhile.
                    QEventLoop alert;
                    QTimer::singleShot(0, &alert, [&] {
                        inbox->receive({"/b.pdf"});
                        alert.quit();
                    });
                    alert.exec();
                    events << "alert closed";
                }
            },
            mainLevel);
        inbox = &box;

        box.receive({"/a.pdf"});
        QCOMPARE(events, (QStringList{"take /a.pdf", "alert closed", "take /b.pdf"}));
        QVERIFY(!box.isHolding());

        // Handed over while a panel is up: held, then taken in order.
        events.clear();
        QEventLoop panel;
        QTimer::singleShot(0, &panel, [&] {
            box.receive({"/c.pdf", "/d.pdf"});
            box.receive({"/e.pdf"});
            panel.quit();
        });
        panel.exec();
        QVERIFY(events.isEmpty());
        QVERIFY(box.isHolding());
        QTRY_COMPARE_WITH_TIMEOUT(events, (QStringList{"take /c.pdf,/d.pdf", "take /e.pdf"}), patience);
        QVERIFY(!box.isHolding());
    }

    void aSecondLaunchHandsItsFilesToTheRunningProgram()
    {
        QTemporaryDir root;
        QDir base(root.path());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        const std::pair<const char*, const char*> homes[] = {
            {"XDG_RUNTIME_DIR", "run"}, {"HOME", "home"}, {"XDG_CONFIG_HOME", "config"}, {"XDG_DATA_HOME", "data"}, {"XDG_CACHE_HOME", "cache"}};
        for (const auto& [variable, folder] : homes) {
            QVERIFY(base.mkpath(folder));
            environment.insert(variable, base.filePath(folder));
        }
        QVERIFY(QFile::setPermissions(base.filePath("run"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        const std::pair<const char*, int> pdfs[] = {{"deck/one.pdf", 2}, {"deck/two.pdf", 1}, {"more/Slide 10.pdf", 1}, {"more/Slide 2.pdf", 1}};
        for (const auto& [path, pages] : pdfs)
            QVERIFY(base.mkpath(QFileInfo(path).path()) && TestPdf::write(base.filePath(path), pages));
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + base.filePath("no-bus"));
        environment.insert("PDF_BRELVONIC_TRACE", "1");
        const QString socket = base.filePath("run/pdf-brelvonic.socket");
        const QString listening = "listening " + socket;
        const QString deck = base.filePath("deck");

        auto first = std::make_unique<Program>(environment, deck, QStringList{});
        QTRY_VERIFY_WITH_TIMEOUT(first->says(listening), patience);

        // A relative path, as a shell gives it: resolved in the sender's folder.
        Program second(environment, deck, {"one.pdf"});
        QVERIFY(second.endedWell());
        QVERIFY(!second.says(listening));
        QTRY_VERIFY_WITH_TIMEOUT(first->says("set: one.pdf"), patience);

        // A tiny file whose page tree claims 2,147,483,647 pages: one alert
        // with the reason, the set as it was, the program still running.
        TestPdf::writeHugePageCount(base.filePath("deck/huge.pdf"));
        Program huge(environment, deck, {"huge.pdf"});
        QVERIFY(huge.endedWell());
        QTRY_COMPARE_WITH_TIMEOUT(first->out.count("\nset: one.pdf\n"), 2, patience);
        QCOMPARE(first->out.count("alert: "), 1);
        // Title, the file's name, and on its second line why (in whatever
        // language the machine's locale picks).
        static const QRegularExpression alertLine(QStringLiteral("^alert: .+: huge\\.pdf \\| .+$"),
                                                  QRegularExpression::MultilineOption);
        QVERIFY2(first->out.contains(alertLine), qPrintable(first->out));
        QCOMPARE(first->process.state(), QProcess::Running);

        // A name that begins with a colon, and a file URL without a folder,
        // are files of the sender's working folder.
        QVERIFY(TestPdf::write(base.filePath("deck/:intro.pdf"), 1));
        Program colon(environment, deck, {":intro.pdf", "file:one.pdf"});
        QVERIFY(colon.endedWell());
        QTRY_VERIFY_WITH_TIMEOUT(first->says("set: one.pdf|:intro.pdf|one.pdf"), patience);

        // Junk on the socket changes nothing; the next hand-over still lands,
        // and onto a loaded set it appends.
        RawClient junk(socket);
        QVERIFY(junk.send("PBRV\xff\xff\xff\xff"));
        QTRY_VERIFY_WITH_TIMEOUT(junk.hungUp(), patience);
        Program third(environment, base.path(), {"more", QUrl::fromLocalFile(base.filePath("deck/two.pdf")).toString()});
        QVERIFY(third.endedWell());
        QTRY_VERIFY_WITH_TIMEOUT(first->says("set: one.pdf|:intro.pdf|one.pdf|Slide 2.pdf|Slide 10.pdf|two.pdf"), patience);
        QCOMPARE(first->process.state(), QProcess::Running);

        // Killed, it leaves its socket behind. Two launches at once: one
        // takes the socket's place, the other hands its file to it.
        first->process.kill();
        QVERIFY(first->process.waitForFinished(patience));
        first.reset();
        QVERIFY(QFileInfo::exists(socket));
        Program fourth(environment, deck, {"two.pdf"});
        Program fifth(environment, deck, {"one.pdf"});
        QTRY_VERIFY_WITH_TIMEOUT(fourth.process.state() == QProcess::NotRunning || fifth.process.state() == QProcess::NotRunning, patience);
        const bool fourthRuns = fourth.process.state() == QProcess::Running;
        Program& running = fourthRuns ? fourth : fifth;
        Program& ended = fourthRuns ? fifth : fourth;
        QVERIFY(ended.endedWell());
        QVERIFY(!ended.says(listening));
        QTRY_VERIFY_WITH_TIMEOUT(running.says(listening), patience);
        QTRY_VERIFY_WITH_TIMEOUT(running.says(fourthRuns ? "set: two.pdf|one.pdf" : "set: one.pdf|two.pdf"), patience);
        QCOMPARE(running.process.state(), QProcess::Running);
    }
};

QTEST_MAIN(SingleInstanceTest)
#include "tst_SingleInstance.moc"
