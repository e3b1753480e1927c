#pragma once

#include <QIcon>
#include <QString>
#include <QUrl>
#include <QVariant>

// What the program says about itself: name, version, developer, web site and
// icon, for the About views and the windows.
class AppInfo {
public:
    static QString name() { return QStringLiteral("PDF Brelvonic"); }
    static QString studio() { return QStringLiteral("Brelvonic"); }

    // "0.1 (127)": the project's version and the build number of this build.
    static QString version();
    // The version text from the two values a build gives: the short version
    // ("0.1" when it is missing, empty or not text) and the build number
    // ("1" when it is missing or empty).
    static QString composeVersion(const QVariant& shortVersion, const QVariant& buildNumber);

    static QUrl website();
    // The site's host name, as the About pane shows it.
    static QString websiteHost() { return website().host(); }

    // The application icon, drawn from its SVG at the usual icon sizes.
    static QIcon icon();
    // The icon drawn at `size` logical pixels for a screen of `ratio` device
    // pixels per logical pixel.
    static QPixmap iconPixmap(int size, qreal ratio = 1.0);
};
