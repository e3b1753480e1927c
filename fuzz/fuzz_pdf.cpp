// PDFs as the engine meets them: open, count and measure the pages, draw a
// few. Any failure must come back as an error or an empty page.
#include "platform/MuPdfEngine.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static QTemporaryDir folder;
    static MuPdfEngine engine;
    const QString path = folder.filePath(QStringLiteral("input.pdf"));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            std::abort();
        file.write(reinterpret_cast<const char*>(data), qint64(size));
    }
    auto opened = engine.open(path);
    auto* document = std::get_if<PdfDocumentPtr>(&opened);
    if (!document)
        return 0;
    const int pages = (*document)->pageCount();
    if (pages <= 0)
        std::abort();  // an open document always has a page
    for (int i = 0; i < pages && i < 3; ++i) {
        (void)(*document)->pageSize(i);
        (void)(*document)->render(i, QSize(64, 48));
    }
    // The workers let go of the file before the leak check between inputs.
    engine.waitUntilIdle();
    return 0;
}
