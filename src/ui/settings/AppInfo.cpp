#include "ui/settings/AppInfo.h"

#include "l10n/L10n.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

// The build sets both; a build that does not shows the defaults.
#ifndef BRELVONIC_SHORT_VERSION
#define BRELVONIC_SHORT_VERSION ""
#endif
#ifndef BRELVONIC_BUILD_NUMBER
#define BRELVONIC_BUILD_NUMBER ""
#endif

namespace {
const QString iconResource = QStringLiteral(":/icons/pdf-brelvonic.svg");

// A text value that is there: a string, not empty.
QString present(const QVariant& value)
{
    if (value.typeId() != QMetaType::QString)
        return {};
    return value.toString().trimmed();
}
}

QString AppInfo::composeVersion(const QVariant& shortVersion, const QVariant& buildNumber)
{
    QString version = present(shortVersion);
    if (version.isEmpty())
        version = QStringLiteral("0.1");
    QString build = present(buildNumber);
    if (build.isEmpty())
        build = QStringLiteral("1");
    return version + QStringLiteral(" (") + build + u')';
}

QString AppInfo::version()
{
    return composeVersion(QString::fromUtf8(BRELVONIC_SHORT_VERSION), QString::fromUtf8(BRELVONIC_BUILD_NUMBER));
}

QUrl AppInfo::website()
{
    return QUrl(L10n::developerSite());
}

QPixmap AppInfo::iconPixmap(int size, qreal ratio)
{
    const int pixels = qMax(1, qRound(size * ratio));
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QSvgRenderer renderer(iconResource);
    if (renderer.isValid()) {
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter, QRectF(0, 0, pixels, pixels));
    }
    pixmap.setDevicePixelRatio(ratio);
    return pixmap;
}

QIcon AppInfo::icon()
{
    // Drawn once per run; a window's title bar, the task switcher and the
    // About views each take the size they need.
    static const QIcon icon = [] {
        QIcon result;
        for (int size : {16, 24, 32, 48, 64, 128, 256})
            result.addPixmap(iconPixmap(size));
        return result;
    }();
    return icon;
}
