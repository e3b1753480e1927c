#include "PipeWireSession.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QThread>

#include <cstdlib>
#include <sys/stat.h>

PipeWireSession::PipeWireSession()
{
    // Short, so the socket paths inside stay within their length limit.
    QByteArray templ = QDir::tempPath().toUtf8() + "/pwtest-XXXXXX";
    if (char* made = mkdtemp(templ.data()))
        dir_ = QString::fromUtf8(made);
    chmod(templ.constData(), 0700);
    env_ = QProcessEnvironment::systemEnvironment();
    env_.insert(QStringLiteral("XDG_RUNTIME_DIR"), dir_);
    env_.insert(QStringLiteral("XDG_CONFIG_HOME"), dir_ + QStringLiteral("/config"));
    env_.insert(QStringLiteral("XDG_STATE_HOME"), dir_ + QStringLiteral("/state"));
    env_.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("unix:path=") + dir_ + QStringLiteral("/bus"));
    env_.remove(QStringLiteral("PIPEWIRE_REMOTE"));
}

PipeWireSession::~PipeWireSession()
{
    stopService();
    end(bus_);
    if (!dir_.isEmpty())
        QDir(dir_).removeRecursively();
}

std::unique_ptr<QProcess> PipeWireSession::launch(const QString& program, const QStringList& arguments)
{
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(env_);
    process->setProgram(program);
    process->setArguments(arguments);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start();
    if (!process->waitForStarted(20000))
        return nullptr;
    return process;
}

void PipeWireSession::end(std::unique_ptr<QProcess>& process)
{
    if (!process)
        return;
    process->terminate();
    if (!process->waitForFinished(10000)) {
        process->kill();
        process->waitForFinished(10000);
    }
    process.reset();
}

bool PipeWireSession::start()
{
    if (dir_.isEmpty())
        return false;
    if (!bus_) {
        bus_ = launch(QStringLiteral("dbus-daemon"),
                      {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                       QStringLiteral("--address=unix:path=") + dir_ + QStringLiteral("/bus")});
        if (!bus_)
            return false;
        const QDeadlineTimer busDeadline(20000);
        while (!QFile::exists(dir_ + QStringLiteral("/bus")) && !busDeadline.hasExpired())
            QThread::msleep(20);
    }
    if (!pipewire_)
        pipewire_ = launch(QStringLiteral("pipewire"), {});
    if (!pipewire_)
        return false;
    const QDeadlineTimer deadline(30000);
    while (!isServiceUp()) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(50);
    }
    if (!wireplumber_)
        wireplumber_ = launch(QStringLiteral("wireplumber"), {});
    return wireplumber_ != nullptr;
}

void PipeWireSession::stopService()
{
    end(wireplumber_);
    end(pipewire_);
    QFile::remove(dir_ + QStringLiteral("/pipewire-0"));
    QFile::remove(dir_ + QStringLiteral("/pipewire-0.lock"));
}

bool PipeWireSession::isServiceUp() const
{
    QProcess probe;
    probe.setProcessEnvironment(env_);
    probe.start(QStringLiteral("pw-cli"), {QStringLiteral("info"), QStringLiteral("0")});
    if (!probe.waitForFinished(10000)) {
        probe.kill();
        probe.waitForFinished();
        return false;
    }
    return probe.exitCode() == 0 && probe.readAllStandardOutput().contains("id: 0");
}

void PipeWireSession::useInThisProcess() const
{
    for (const char* key : {"XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS"})
        qputenv(key, env_.value(QString::fromLatin1(key)).toUtf8());
    qunsetenv("PIPEWIRE_REMOTE");
}

QByteArray PipeWireSession::run(const QString& program, const QStringList& arguments, int timeoutMs) const
{
    QProcess process;
    process.setProcessEnvironment(env_);
    process.start(program, arguments);
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
    }
    return process.readAllStandardOutput();
}
