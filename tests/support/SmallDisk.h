#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <cerrno>

#include <sys/mount.h>
#include <unistd.h>

// A small file system of its own (tmpfs) mounted on a temporary folder, to
// see what a full or read-only disk does. Mounting needs root: elsewhere
// `mounted()` is false and the test says why it skips.
class SmallDisk {
public:
    explicit SmallDisk(int kilobytes = 64)
    {
        const QByteArray options = "size=" + QByteArray::number(kilobytes) + "k,mode=0755";
        mounted_ = ::geteuid() == 0 && dir_.isValid()
            && ::mount("tmpfs", path().toLocal8Bit().constData(), "tmpfs", 0, options.constData()) == 0;
    }
    ~SmallDisk()
    {
        if (mounted_)
            ::umount2(path().toLocal8Bit().constData(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool mounted() const { return mounted_; }
    QString path() const { return dir_.path(); }
    QString file(const QString& name) const { return dir_.filePath(name); }

    // Takes every free block with a filler file; true once the disk refuses more.
    bool fill()
    {
        QFile filler(file(QStringLiteral(".filler")));
        if (!filler.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
            return false;
        const QByteArray block(4096, 'x');
        while (filler.write(block) == block.size()) {
        }
        // Whatever is left is smaller than a block: take it byte by byte.
        while (filler.write("x", 1) == 1) {
        }
        return true;
    }

    bool makeReadOnly()
    {
        return mounted_
            && ::mount(nullptr, path().toLocal8Bit().constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

private:
    QTemporaryDir dir_;
    bool mounted_ = false;
};
