#include "TestPdf.h"

#include <QColor>
#include <QFile>
#include <QFont>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

namespace TestPdf {

unsigned pageRgb(int index)
{
    return QColor::fromHsv((index * 47) % 360, 160, 230).rgb() & 0xFFFFFF;
}

int pageShown(const std::shared_ptr<const QImage>& image)
{
    if (!image || image->isNull())
        return -1;
    const QColor got = QColor::fromRgb(image->pixel(4, 4));
    for (int i = 0; i < 40; ++i) {
        const QColor want = QColor::fromRgb(pageRgb(i));
        if (qAbs(want.red() - got.red()) <= 3 && qAbs(want.green() - got.green()) <= 3
            && qAbs(want.blue() - got.blue()) <= 3)
            return i;
    }
    return -2;
}

bool write(const QString& path, int pages, QSizeF pageSize, const QString& label)
{
    QPdfWriter writer(path);
    writer.setPageSize(QPageSize(pageSize, QPageSize::Point));
    writer.setPageMargins(QMarginsF(0, 0, 0, 0), QPageLayout::Point);
    writer.setResolution(72);
    writer.setCreator(QStringLiteral("test"));
    QPainter painter;
    if (!painter.begin(&writer))
        return false;
    for (int i = 0; i < pages; ++i) {
        if (i > 0)
            writer.newPage();
        const QRectF area(QPointF(0, 0), pageSize);
        painter.fillRect(area, QColor::fromRgb(pageRgb(i)));
        QFont font = painter.font();
        font.setPointSizeF(pageSize.height() / 3);
        painter.setFont(font);
        painter.setPen(Qt::black);
        painter.drawText(area, Qt::AlignCenter, QString::number(i + 1));
        if (!label.isEmpty()) {
            font.setPointSizeF(pageSize.height() / 14);
            painter.setFont(font);
            painter.drawText(area.adjusted(0, pageSize.height() / 20, 0, 0), Qt::AlignHCenter | Qt::AlignTop, label);
        }
    }
    return painter.end();
}

void writeEmpty(const QString& path)
{
    QFile f(path);
    f.open(QIODevice::WriteOnly | QIODevice::Truncate);
}

void writeNotPdf(const QString& path)
{
    QFile f(path);
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        f.write("These are the notes for tonight, not a PDF.\n");
}

bool writeTruncated(const QString& path)
{
    if (!write(path, 3))
        return false;
    QFile f(path);
    if (!f.open(QIODevice::ReadWrite))
        return false;
    const QByteArray whole = f.readAll();
    f.resize(0);
    f.seek(0);
    // Keep only the header and part of the first object: no page tree survives.
    f.write(whole.left(qMin<qsizetype>(whole.size() / 8, 200)));
    return true;
}

bool writeEncrypted(const QString& path)
{
    // A minimal PDF 1.4 with a standard security handler (RC4, 40 bits) whose
    // user password is not empty: opening it without a password must fail.
    const QByteArray body =
        "%PDF-1.4\n"
        "1 0 obj\n<< /Type /Catalog /Pages 2 0 R >>\nendobj\n"
        "2 0 obj\n<< /Type /Pages /Kids [3 0 R] /Count 1 >>\nendobj\n"
        "3 0 obj\n<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] >>\nendobj\n"
        "4 0 obj\n<< /Filter /Standard /V 1 /R 2 /Length 40\n"
        "/O <8F3A5C1D2E4B6A7980F1E2D3C4B5A69788796A5B4C3D2E1F00112233445566778>\n"
        "/U <1122334455667788990011223344556677889900AABBCCDDEEFF001122334455>\n"
        "/P -44 >>\nendobj\n";
    QByteArray pdf = body;
    const qsizetype xref = pdf.size();
    // Offsets only need to be close enough for a repairing reader; the
    // encryption dictionary is what decides.
    pdf += "xref\n0 5\n0000000000 65535 f \n";
    qsizetype pos = 0;
    for (int n = 1; n <= 4; ++n) {
        pos = body.indexOf(QByteArray::number(n) + " 0 obj", pos);
        pdf += QString::asprintf("%010lld 00000 n \n", static_cast<long long>(pos)).toLatin1();
    }
    pdf += "trailer\n<< /Size 5 /Root 1 0 R /Encrypt 4 0 R /ID [<0123456789ABCDEF0123456789ABCDEF> <0123456789ABCDEF0123456789ABCDEF>] >>\n";
    pdf += "startxref\n" + QByteArray::number(xref) + "\n%%EOF\n";
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    return f.write(pdf) == pdf.size();
}

}
