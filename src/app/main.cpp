#include "app/AppShell.h"
#include "app/HandOverInbox.h"
#include "app/SingleInstance.h"
#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "show/DocumentIntake.h"
#include "ui/settings/AppInfo.h"
#include "ui/console/ConsoleStyle.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace {
// With PDF_BRELVONIC_TRACE set, the program tells on stdout when it serves
// hand-overs and what its set holds after taking files, so that a test can
// watch a running program from outside.
void trace(const QString& line)
{
    if (!qEnvironmentVariableIsSet("PDF_BRELVONIC_TRACE"))
        return;
    std::fputs(qPrintable(line + u'\n'), stdout);
    std::fflush(stdout);
}

void traceSet(const AppModel& model)
{
    QStringList names;
    for (const auto& entry : model.playlist())
        names << QFileInfo(entry.url).fileName();
    trace(QStringLiteral("set: ") + names.join(u'|'));
}

void nameTheProgram()
{
    QCoreApplication::setApplicationName(QStringLiteral("PDF Brelvonic"));
    QCoreApplication::setOrganizationName(QStringLiteral("Brelvonic"));
    QCoreApplication::setApplicationVersion(QStringLiteral(BRELVONIC_VERSION));
}

// --help and --version answer and end in `process`; files are the only other
// arguments.
void describeArguments(QCommandLineParser& parser)
{
    parser.setApplicationDescription(L10n::t(QStringLiteral("cli.description")));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("files"), L10n::t(QStringLiteral("cli.files")),
                                 QStringLiteral("[files...]"));
}

// Whether the command line only asks for help or the version, which a
// terminal without a display must answer too.
bool onlyAsks(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument(argv[i]);
        if (argument == "--")
            return false;
        if (argument == "-h" || argument == "-?" || argument == "--help" || argument == "--help-all"
            || argument == "-v" || argument == "--version")
            return true;
    }
    return false;
}
}

int main(int argc, char** argv)
{
    if (onlyAsks(argc, argv)) {
        QCoreApplication core(argc, argv);
        nameTheProgram();
        QCommandLineParser parser;
        describeArguments(parser);
        parser.process(core);
        return 0;
    }

    QApplication app(argc, argv);
    nameTheProgram();
    ConsoleStyle::applyDarkTheme(app);

    QCommandLineParser parser;
    describeArguments(parser);
    parser.process(app);
    // Every window shows the program's icon; the desktop entry names the same one.
    QApplication::setWindowIcon(AppInfo::icon());
    QGuiApplication::setDesktopFileName(QStringLiteral("pdf-brelvonic"));

    // Files given at launch are taken like a drop, here or by the program
    // that already runs for this user.
    const QStringList files = DocumentIntake::argumentPaths(parser.positionalArguments(), QDir::currentPath());
    SingleInstance instance;
    if (instance.claim(files) == SingleInstance::Role::handedOver)
        return 0;

    AppModel& model = AppModel::shared();
    AppShell shell(model);
    shell.showConsole();
    model.start();

    // Handed-over files are taken from the main loop (app.exec, depth 1),
    // never inside an alert or panel of an operation still under way.
    HandOverInbox inbox([&](const QStringList& paths) {
        shell.openFiles(paths);
        traceSet(model);
    }, 1);
    QObject::connect(&instance, &SingleInstance::filesReceived, &inbox, &HandOverInbox::receive, Qt::QueuedConnection);
    // The launch's own files too, once the main loop runs, so that a later
    // hand-over cannot arrive inside one of their alerts.
    if (!files.isEmpty())
        QMetaObject::invokeMethod(&inbox, [&inbox, files] { inbox.receive(files); }, Qt::QueuedConnection);
    if (instance.isListening())
        trace(QStringLiteral("listening ") + instance.socketName());
    return app.exec();
}
