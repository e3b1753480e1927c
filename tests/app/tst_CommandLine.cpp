#include <QProcess>
#include <QtTest>

#include <utility>

namespace {
struct Result {
    int exitCode = -1;
    QString out;
    QString err;
};

// Runs the real program with `arguments` and waits for it to end; without
// `display`, as from a terminal that has no display to show windows on.
Result runProgram(const QStringList& arguments, bool display = true)
{
    QProcess program;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    if (display) {
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    } else {
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        env.remove(QStringLiteral("DISPLAY"));
        env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    }
    env.insert(QStringLiteral("LANGUAGE"), QStringLiteral("en"));
    program.setProcessEnvironment(env);
    program.start(QStringLiteral(PDF_BRELVONIC_PATH), arguments);
    if (!program.waitForFinished(60000)) {
        program.kill();
        program.waitForFinished();
        return {};
    }
    return {program.exitCode(), QString::fromUtf8(program.readAllStandardOutput()),
            QString::fromUtf8(program.readAllStandardError())};
}
}

class CommandLineTest : public QObject {
    Q_OBJECT

private slots:
    // --help and --version answer and end the program; an unknown option is
    // refused with a message instead of being taken for a file.
    void helpVersionAndUnknownOptions()
    {
        const Result version = runProgram({QStringLiteral("--version")});
        QCOMPARE(version.exitCode, 0);
        QCOMPARE(version.out.trimmed(), QStringLiteral("PDF Brelvonic " BRELVONIC_VERSION));

        const Result help = runProgram({QStringLiteral("--help")});
        QCOMPARE(help.exitCode, 0);
        for (const char* part : {"--help", "--version", "files"})
            QVERIFY2(help.out.contains(QLatin1String(part)), qPrintable(help.out));

        // Both answer where no window could open.
        for (const auto& [ask, answer] : {std::pair{"--version", "PDF Brelvonic"}, {"-v", "PDF Brelvonic"},
                                          {"--help", "--version"}}) {
            const Result noDisplay = runProgram({QString::fromLatin1(ask)}, false);
            QCOMPARE(noDisplay.exitCode, 0);
            QVERIFY2(noDisplay.out.contains(QLatin1String(answer)), qPrintable(noDisplay.err));
        }

        const Result unknown = runProgram({QStringLiteral("--projector")});
        QVERIFY(unknown.exitCode != 0);
        QVERIFY2(unknown.err.contains(QStringLiteral("projector")), qPrintable(unknown.err));
    }
};

QTEST_MAIN(CommandLineTest)
#include "tst_CommandLine.moc"
