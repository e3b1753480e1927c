#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <csignal>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

// A private X server for one test: Xvfb picks a free display number itself
// (-displayfd) and is ended by its process id.
class XvfbServer {
public:
    explicit XvfbServer(const QString& screen = QStringLiteral("800x600x24"))
    {
        int fds[2];
        if (::pipe(fds) != 0)
            return;
        const std::string fd = std::to_string(fds[1]), size = screen.toStdString();
        pid_ = ::fork();
        if (pid_ == 0) {
            ::close(fds[0]);
            ::execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", size.c_str(), "-nolisten", "tcp",
                     static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ::close(fds[1]);
        // The server writes its display number once it accepts clients.
        QByteArray number;
        pollfd p{fds[0], POLLIN, 0};
        while (::poll(&p, 1, 30000) > 0) {
            char c;
            if (::read(fds[0], &c, 1) != 1 || c == '\n')
                break;
            number += c;
        }
        ::close(fds[0]);
        if (!number.isEmpty())
            display_ = QStringLiteral(":") + QString::fromLatin1(number);
    }
    ~XvfbServer()
    {
        if (pid_ > 0) {
            ::kill(pid_, SIGTERM);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

    bool isRunning() const { return !display_.isEmpty(); }
    QString display() const { return display_; }

    // Runs an X client program on this server; its exit code.
    int run(const QString& program, const QStringList& arguments) const
    {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("DISPLAY"), display_);
        process.setProcessEnvironment(env);
        process.start(program, arguments);
        if (!process.waitForFinished(30000))
            return -1;
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

private:
    pid_t pid_ = -1;
    QString display_;
};
