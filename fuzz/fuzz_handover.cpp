// Hand-over messages from another launch (or anything that reaches the
// socket): a message is read whole or refused, and gives absolute, clean
// paths only. A message that reads must survive being written again.
#include "app/SingleInstance.h"

#include <QDir>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QStringList paths;
    if (SingleInstance::readMessage(bytes, paths) != SingleInstance::Read::done)
        return 0;
    for (const QString& path : paths)
        if (!path.startsWith(u'/') || path.contains(QChar(0)) || QDir::cleanPath(path) != path)
            std::abort();
    QStringList again;
    if (SingleInstance::readMessage(SingleInstance::encode(paths), again) != SingleInstance::Read::done || again != paths)
        std::abort();
    return 0;
}
