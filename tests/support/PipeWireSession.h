#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>

#include <memory>

// A private media service for one test: a session bus, PipeWire and its
// session manager in their own runtime folder, so parallel runs never meet.
// Everything it starts it ends by process id.
class PipeWireSession {
public:
    PipeWireSession();
    ~PipeWireSession();
    PipeWireSession(const PipeWireSession&) = delete;
    PipeWireSession& operator=(const PipeWireSession&) = delete;

    // Starts the bus (once) and the service; true when it answers.
    bool start();
    // Ends the service and the session manager (the bus stays).
    void stopService();
    bool isServiceUp() const;

    // This process talks to this session from now on.
    void useInThisProcess() const;
    QProcessEnvironment environment() const { return env_; }
    QString runtimeDir() const { return dir_; }

    // Runs a tool of the service (pw-dump, pw-cli) in this session; its output.
    QByteArray run(const QString& program, const QStringList& arguments, int timeoutMs = 20000) const;

private:
    std::unique_ptr<QProcess> launch(const QString& program, const QStringList& arguments);
    static void end(std::unique_ptr<QProcess>& process);

    QString dir_;
    QProcessEnvironment env_;
    std::unique_ptr<QProcess> bus_;
    std::unique_ptr<QProcess> pipewire_;
    std::unique_ptr<QProcess> wireplumber_;
};
