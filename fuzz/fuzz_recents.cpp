// The shared recent-files store as other programs may leave it: noting a
// file must leave a store that lists that file, whatever was there before.
#include "platform/XbelRecentDocuments.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static QTemporaryDir folder;
    const QString store = folder.filePath(QStringLiteral("recently-used.xbel"));
    {
        QFile file(store);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            std::abort();
        file.write(reinterpret_cast<const char*>(data), qint64(size));
    }
    XbelRecentDocuments recents(store);
    (void)recents.list();
    const QString noted = QStringLiteral("/shows/tonight & more/slides.pdf");
    recents.note(noted);
    if (!recents.list().contains(noted))
        std::abort();
    recents.clear();
    if (recents.list().contains(noted))
        std::abort();
    return 0;
}
