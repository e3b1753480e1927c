#include "base/AtomicWrite.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace AtomicWrite {

Failure::Kind kindOf(int code)
{
    switch (code) {
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return Failure::Kind::noSpace;
    case EACCES:
    case EPERM:
        return Failure::Kind::noPermission;
    case EROFS:
        return Failure::Kind::readOnly;
    default:
        return Failure::Kind::other;
    }
}

namespace {

Failure failure(int code)
{
    return Failure{kindOf(code), code, QString::fromLocal8Bit(std::strerror(code))};
}

// The file a path finally names, links followed, even when it does not exist yet.
QString finalTarget(const QString& path)
{
    QString target = QFileInfo(path).absoluteFilePath();
    for (int hops = 0; hops < 40; ++hops) {
        const QFileInfo info(target);
        if (!info.isSymLink())
            break;
        target = info.symLinkTarget();
    }
    return target;
}

mode_t currentUmask()
{
    const mode_t mask = ::umask(022);
    ::umask(mask);
    return mask;
}

bool writeAll(int fd, const QByteArray& bytes)
{
    const char* data = bytes.constData();
    qsizetype left = bytes.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, data, std::size_t(left));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            if (n == 0)
                errno = EIO;
            return false;
        }
        data += n;
        left -= n;
    }
    return true;
}

}

std::optional<Failure> write(const QString& path, const QByteArray& bytes, unsigned newFileMode)
{
    const QString target = finalTarget(path);
    const QFileInfo info(target);
    QByteArray temporary = QFile::encodeName(info.absolutePath() + QStringLiteral("/.") + info.fileName()
                                             + QStringLiteral(".XXXXXX"));
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0)
        return failure(errno);

    const QByteArray native = QFile::encodeName(target);
    struct stat old{};
    const mode_t mode = ::stat(native.constData(), &old) == 0 ? (old.st_mode & 07777)
                                                              : (mode_t(newFileMode) & ~currentUmask() & 07777);
    int code = 0;
    if (::fchmod(fd, mode) != 0 || !writeAll(fd, bytes) || ::fsync(fd) != 0)
        code = errno;
    if (::close(fd) != 0 && code == 0)
        code = errno;
    if (code == 0 && ::rename(temporary.constData(), native.constData()) != 0)
        code = errno;
    if (code != 0) {
        ::unlink(temporary.constData());
        return failure(code);
    }
    // The rename itself reaches the disk with the folder.
    const int dir = ::open(QFile::encodeName(info.absolutePath()).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return std::nullopt;
}

}
