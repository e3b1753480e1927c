#include "TestPdf.h"

#include <QColor>
#include <QFile>
#include <QFont>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

extern "C" {
#include <mupdf/fitz.h>
#include <mupdf/pdf.h>
}

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

void writeHugePageCount(const QString& path)
{
    QFile f(path);
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        f.write("%PDF-1.4\n"
                "1 0 obj <</Type/Catalog/Pages 2 0 R>> endobj\n"
                "2 0 obj <</Type/Pages/Count 2147483647/Kids[3 0 R]>> endobj\n"
                "3 0 obj <</Type/Page/Parent 2 0 R/MediaBox[0 0 200 100]>> endobj\n"
                "trailer <</Root 1 0 R>>\n"
                "%%EOF\n");
}

void writeOutlinedLetter(const QString& path)
{
    // Text render mode 1: the glyph's outline is stroked, its inside left empty.
    const QByteArray content = "1 Tr 4 w 0 0 0 RG BT /F1 300 Tf 60 60 Td (I) Tj ET";
    const QList<QByteArray> objects{
        "<</Type/Catalog/Pages 2 0 R>>",
        "<</Type/Pages/Count 1/Kids[3 0 R]>>",
        "<</Type/Page/Parent 2 0 R/MediaBox[0 0 200 400]/Resources<</Font<</F1 4 0 R>>>>/Contents 5 0 R>>",
        "<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>",
        "<</Length " + QByteArray::number(content.size()) + ">>\nstream\n" + content + "\nendstream",
    };
    QByteArray pdf = "%PDF-1.4\n";
    QList<qsizetype> offsets;
    for (int i = 0; i < objects.size(); ++i) {
        offsets << pdf.size();
        pdf += QByteArray::number(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const qsizetype xref = pdf.size();
    pdf += "xref\n0 " + QByteArray::number(objects.size() + 1) + "\n0000000000 65535 f \n";
    for (qsizetype offset : offsets)
        pdf += QByteArray::number(offset).rightJustified(10, '0') + " 00000 n \n";
    pdf += "trailer\n<</Size " + QByteArray::number(objects.size() + 1) + "/Root 1 0 R>>\nstartxref\n"
        + QByteArray::number(xref) + "\n%%EOF\n";
    QFile f(path);
    if (f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        f.write(pdf);
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

namespace {
// Opens `file` with the PDF library and runs `work(ctx, doc)` on it: false
// when the file does not open, `work` says so or the library throws.
template <typename Work>
bool withDocument(const QString& file, Work work)
{
    const QByteArray name = QFile::encodeName(file);
    fz_context* ctx = fz_new_context(nullptr, nullptr, FZ_STORE_DEFAULT);
    if (!ctx)
        return false;
    bool ok = false;
    pdf_document* doc = nullptr;
    fz_var(doc);
    fz_var(ok);
    fz_try(ctx)
    {
        doc = pdf_open_document(ctx, name.constData());
        ok = work(ctx, doc);
    }
    fz_always(ctx) pdf_drop_document(ctx, doc);
    fz_catch(ctx) ok = false;
    fz_drop_context(ctx);
    return ok;
}

// Saves a deck from `write` again with the PDF library's own writer; when
// asked, page 1 is cropped to the left half of its media box and page 2 is
// turned a quarter.
bool resave(const QString& path, int pages, const pdf_write_options& options, bool cropAndTurn)
{
    const QString plain = path + QStringLiteral(".plain");
    if (!write(plain, pages))
        return false;
    const QByteArray target = QFile::encodeName(path);
    const bool ok = withDocument(plain, [&](fz_context* ctx, pdf_document* doc) {
        if (cropAndTurn) {
            pdf_obj* page = pdf_lookup_page_obj(ctx, doc, 0);
            const fz_rect media = pdf_to_rect(ctx, pdf_dict_get_inheritable(ctx, page, PDF_NAME(MediaBox)));
            pdf_dict_put_rect(ctx, page, PDF_NAME(CropBox),
                              fz_make_rect(media.x0, media.y0, (media.x0 + media.x1) / 2, media.y1));
            if (pages > 1)
                pdf_dict_put_int(ctx, pdf_lookup_page_obj(ctx, doc, 1), PDF_NAME(Rotate), 90);
        }
        pdf_save_document(ctx, doc, target.constData(), &options);
        return true;
    });
    QFile::remove(plain);
    return ok;
}
}

bool writeEncrypted(const QString& path, const QByteArray& userPassword)
{
    // Exactly what a locked deck from another program looks like: AES-256
    // with a user password.
    pdf_write_options options = pdf_default_write_options;
    options.do_encrypt = PDF_ENCRYPT_AES_256;
    options.permissions = -4;  // everything allowed once opened
    fz_strlcpy(options.upwd_utf8, userPassword.constData(), sizeof options.upwd_utf8);
    fz_strlcpy(options.opwd_utf8, userPassword.constData(), sizeof options.opwd_utf8);
    return resave(path, 2, options, false);
}

bool writeCropped(const QString& path, int pages)
{
    return resave(path, pages, pdf_default_write_options, true);
}

bool opensWithPassword(const QString& path, const QByteArray& password)
{
    return withDocument(path, [&](fz_context* ctx, pdf_document* doc) {
        return pdf_needs_password(ctx, doc) && pdf_authenticate_password(ctx, doc, password.constData())
            && pdf_count_pages(ctx, doc) == 2;
    });
}

}
