#include "ui/console/ConsoleStyle.h"

#include <QApplication>
#include <QFile>
#include <QPalette>
#include <QStyleFactory>
#include <QWidget>

namespace ConsoleStyle {

QColor mark() { return QColor::fromRgbF(0.18f, 0.46f, 0.94f); }
QColor sky() { return QColor::fromRgbF(0.38f, 0.72f, 0.98f); }
QColor teal() { return QColor::fromRgbF(0.12f, 0.68f, 0.72f); }
QColor indigo() { return QColor::fromRgbF(0.40f, 0.38f, 0.90f); }
QColor orange() { return QColor(255, 159, 10); }
QColor green() { return QColor(48, 209, 88); }
QColor red() { return QColor(255, 69, 58); }
QColor blue() { return QColor(10, 132, 255); }

QIcon icon(const QString& name)
{
    const QString own = QStringLiteral(":/icons/%1.svg").arg(name);
    if (QIcon::hasThemeIcon(name))
        return QIcon::fromTheme(name);
    return QFile::exists(own) ? QIcon(own) : QIcon();
}

void applyDarkTheme(QApplication& app)
{
    app.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette p;
    const QColor window(30, 31, 34);
    const QColor base(22, 23, 26);
    const QColor text(236, 236, 240);
    const QColor dim(150, 152, 160);
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, QColor(38, 39, 43));
    p.setColor(QPalette::ToolTipBase, QColor(50, 51, 56));
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, dim);
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(48, 49, 54));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, Qt::white);
    p.setColor(QPalette::Light, QColor(70, 71, 76));
    p.setColor(QPalette::Midlight, QColor(58, 59, 64));
    p.setColor(QPalette::Mid, QColor(44, 45, 50));
    p.setColor(QPalette::Dark, QColor(16, 16, 18));
    p.setColor(QPalette::Shadow, Qt::black);
    p.setColor(QPalette::Highlight, mark());
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, sky());
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, QColor(105, 106, 112));
    p.setColor(QPalette::Disabled, QPalette::Button, QColor(40, 41, 45));
    app.setPalette(p);
}

void enlargeFont(QWidget* widget, double factor, bool bold)
{
    QFont font = widget->font();
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setBold(bold);
    widget->setFont(font);
}

}
