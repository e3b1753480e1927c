// Texts and bytes a drag, a drop or the command line carries: every path
// that comes out is absolute and clean.
#include "show/DocumentIntake.h"

#include <QDir>

#include <cstdint>
#include <cstdlib>

namespace {
void check(const QString& path)
{
    if (!path.startsWith(u'/') || path.contains(QChar(0)) || QDir::cleanPath(path) != path)
        std::abort();
}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    if (auto path = DocumentIntake::parse(bytes))
        check(*path);
    const QString text = QString::fromUtf8(bytes);
    if (auto path = DocumentIntake::parse(text))
        check(*path);
    for (const QString& path : DocumentIntake::argumentPaths(text.split(u'\n'), QStringLiteral("/home/stage")))
        check(path);
    return 0;
}
