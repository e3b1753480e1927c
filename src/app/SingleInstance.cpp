#include "app/SingleInstance.h"

#include "show/DocumentIntake.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QStandardPaths>
#include <QTimer>
#include <QtEndian>

#include <memory>

namespace {
constexpr char magic[] = "PBRV";
constexpr qsizetype magicSize = 4;
constexpr qsizetype headerSize = magicSize + 4;
const QByteArray acknowledgement("ok");
// A client that connects but never completes its message is dropped.
constexpr int clientTimeoutMs = 10000;
}

SingleInstance::SingleInstance(QString socketName, QObject* parent)
    : QObject(parent)
    , name_(std::move(socketName))
    , server_(new QLocalServer(this))
{
    connect(server_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = server_->nextPendingConnection())
            serve(socket);
    });
}

SingleInstance::~SingleInstance() = default;

QString SingleInstance::defaultSocketName()
{
    // Qt checks that this folder belongs to the user with mode 0700, and
    // makes a private one when the session gives none.
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return QDir(runtime).filePath(QStringLiteral("pdf-brelvonic.socket"));
}

SingleInstance::Role SingleInstance::claim(const QStringList& paths)
{
    QLockFile lock(name_ + QStringLiteral(".lock"));
    // Without the lock (an unwritable folder, a stuck holder) carry on: at
    // worst two programs run side by side.
    const bool locked = lock.tryLock(clientTimeoutMs);
    if (handOver(paths))
        return Role::handedOver;
    // Nobody answered: whatever is left at the name is from a crash.
    QLocalServer::removeServer(name_);
    listen();
    if (locked)
        lock.unlock();
    return Role::primary;
}

bool SingleInstance::listen()
{
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    return server_->listen(name_);
}

bool SingleInstance::isListening() const
{
    return server_->isListening();
}

bool SingleInstance::handOver(const QStringList& paths, int timeoutMs) const
{
    QLocalSocket socket;
    socket.connectToServer(name_);
    if (!socket.waitForConnected(timeoutMs))
        return false;
    socket.write(encode(paths));
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten(timeoutMs))
            return false;
    }
    // Once written the files are the running program's; its answer only
    // tells that it has read them, so a busy program does not lose them.
    QByteArray answer;
    while (answer.size() < acknowledgement.size() && socket.waitForReadyRead(timeoutMs))
        answer += socket.readAll();
    return true;
}

QByteArray SingleInstance::encode(const QStringList& paths)
{
    const QByteArray payload = QJsonDocument(QJsonArray::fromStringList(paths)).toJson(QJsonDocument::Compact);
    QByteArray message(magic, magicSize);
    char length[4];
    qToBigEndian(static_cast<quint32>(payload.size()), length);
    message.append(length, 4);
    message.append(payload);
    return message;
}

SingleInstance::Read SingleInstance::readMessage(const QByteArray& buffer, QStringList& paths)
{
    const qsizetype seen = std::min(buffer.size(), magicSize);
    if (QByteArrayView(buffer).first(seen) != QByteArrayView(magic, seen))
        return Read::bad;
    if (buffer.size() < headerSize)
        return Read::needMore;
    const quint32 length = qFromBigEndian<quint32>(buffer.constData() + magicSize);
    if (length > static_cast<quint32>(maxPayload))
        return Read::bad;
    if (buffer.size() < headerSize + static_cast<qsizetype>(length))
        return Read::needMore;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(buffer.mid(headerSize, length), &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return Read::bad;
    QStringList received;
    for (const QJsonValue& value : document.array()) {
        if (!value.isString())
            return Read::bad;
        // A relative path would mean the sender's folder, unknown here.
        if (value.toString().startsWith(u'/')) {
            if (auto path = DocumentIntake::localPath(value.toString(), {}))
                received << *path;
        }
    }
    paths = received;
    return Read::done;
}

void SingleInstance::serve(QLocalSocket* socket)
{
    connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
    QTimer::singleShot(clientTimeoutMs, socket, [socket] { socket->abort(); });
    auto buffer = std::make_shared<QByteArray>();
    auto finished = std::make_shared<bool>(false);
    connect(socket, &QLocalSocket::readyRead, this, [this, socket, buffer, finished] {
        if (*finished) {
            socket->readAll();
            return;
        }
        buffer->append(socket->readAll());
        QStringList paths;
        switch (readMessage(*buffer, paths)) {
        case Read::needMore:
            return;
        case Read::bad:
            *finished = true;
            socket->abort();
            return;
        case Read::done:
            *finished = true;
            socket->write(acknowledgement);
            socket->flush();
            socket->disconnectFromServer();
            emit filesReceived(paths);
            return;
        }
    });
}
