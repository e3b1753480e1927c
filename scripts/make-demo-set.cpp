// Writes a small demo set (two PDFs) for `make run`.
#include "../tests/support/TestPdf.h"

#include <QDir>
#include <QGuiApplication>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QString dir = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("demo-set");
    QDir().mkpath(dir);
    const bool ok = TestPdf::write(dir + "/1 Opening.pdf", 4, TestPdf::widescreen, QStringLiteral("Opening"))
        && TestPdf::write(dir + "/2 Encore.pdf", 3, TestPdf::standard, QStringLiteral("Encore"));
    return ok ? 0 : 1;
}
