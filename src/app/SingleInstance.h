#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

class QLocalServer;
class QLocalSocket;

// One running program per user. A later launch (a file opened from the file
// manager, a second start from a shell) hands its files to the running
// program over a local socket and ends; the running program takes them as a
// drop. The socket lives in the user's private runtime folder.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    explicit SingleInstance(QString socketName = defaultSocketName(), QObject* parent = nullptr);
    ~SingleInstance() override;

    // This user's socket: in the runtime folder that only the user can enter.
    static QString defaultSocketName();

    enum class Role { primary, handedOver };
    // Hands `paths` to the running program, or, when none answers, becomes
    // it: a socket left by a crash is replaced. Two launches at once are
    // serialised by a lock file beside the socket.
    Role claim(const QStringList& paths);

    // Sends `paths` to the program serving the socket; true when it took them.
    bool handOver(const QStringList& paths, int timeoutMs = 5000) const;

    bool isListening() const;
    QString socketName() const { return name_; }

    // A message: the magic "PBRV", the payload's length (32-bit big-endian),
    // then a JSON array of absolute paths. The running program answers "ok".
    static QByteArray encode(const QStringList& paths);
    enum class Read { needMore, bad, done };
    // Reads one message from the start of `buffer`; `done` fills `paths`
    // with its absolute paths. Anything malformed or oversized is `bad`.
    static Read readMessage(const QByteArray& buffer, QStringList& paths);
    static constexpr qsizetype maxPayload = 1 << 20;

signals:
    // Files handed over by another launch (possibly none: it only asks to be seen).
    void filesReceived(const QStringList& paths);

private:
    bool listen();
    void serve(QLocalSocket* socket);

    QString name_;
    QLocalServer* server_;
};
