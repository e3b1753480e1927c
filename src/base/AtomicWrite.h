#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Replacing a file so that it is either the new content or, after any
// failure, the old file byte for byte. Every step is checked: each write
// (unbuffered, so a full disk shows at once), the flush to the disk, the
// close and the rename over the old file.
namespace AtomicWrite {

struct Failure {
    // The causes an operator can act on are told apart; the rest keep the
    // platform's own description.
    enum class Kind { noSpace, noPermission, readOnly, other };
    Kind kind = Kind::other;
    int code = 0;           // errno
    QString platformText;   // the platform's description of `code`
};

// Writes `bytes` to `path` through a temporary file beside it. An existing
// file keeps its permissions; a new one gets `newFileMode` (POSIX bits)
// masked by the umask. A symbolic link is followed: the file it names is
// replaced, the link stays.
std::optional<Failure> write(const QString& path, const QByteArray& bytes, unsigned newFileMode = 0666);

Failure::Kind kindOf(int code);

}
