#include "app/AppShell.h"
#include "app/HandOverInbox.h"
#include "app/SingleInstance.h"
#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "show/DocumentIntake.h"

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
}

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("PDF Brelvonic"));
    QApplication::setOrganizationName(QStringLiteral("Brelvonic"));
    QApplication::setApplicationVersion(QStringLiteral(BRELVONIC_VERSION));

    // --help and --version answer and end here; files are the only other arguments.
    QCommandLineParser parser;
    parser.setApplicationDescription(L10n::t(QStringLiteral("cli.description")));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("files"), L10n::t(QStringLiteral("cli.files")),
                                 QStringLiteral("[files...]"));
    parser.process(app);

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
