#include "QtScreens.h"

#include <QGuiApplication>
#include <QScreen>

namespace {
uint32_t idOf(const QScreen* screen)
{
    return QtScreens::identifierOf(screen->name(), screen->manufacturer(), screen->model(), screen->serialNumber());
}
}

QtScreens::QtScreens()
{
    if (!qGuiApp)
        return;
    for (QScreen* screen : QGuiApplication::screens())
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, [this](QScreen* screen) {
        watch(screen);
        changed();
    });
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, [this](QScreen*) { changed(); });
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, [this](QScreen*) { changed(); });
}

uint32_t QtScreens::identifierOf(const QString& name, const QString& manufacturer, const QString& model,
                                 const QString& serial)
{
    // FNV-1a over the UTF-8 of the four fields, each closed by a separator.
    uint32_t hash = 2166136261u;
    for (const QString& part : {name, manufacturer, model, serial}) {
        const QByteArray bytes = part.toUtf8() + '\x1f';
        for (const char c : bytes) {
            hash ^= static_cast<unsigned char>(c);
            hash *= 16777619u;
        }
    }
    return hash == 0 ? 1 : hash;
}

void QtScreens::watch(QScreen* screen)
{
    connect(screen, &QScreen::geometryChanged, this, [this] { changed(); });
    connect(screen, &QScreen::physicalDotsPerInchChanged, this, [this] { changed(); });
}

void QtScreens::changed()
{
    if (handler_)
        handler_();
}

std::vector<PlatformScreen> QtScreens::screens() const
{
    std::vector<PlatformScreen> list;
    if (!qGuiApp)
        return list;
    for (const QScreen* screen : QGuiApplication::screens())
        list.push_back(PlatformScreen{idOf(screen), screen->name(), QRectF(screen->geometry()), screen->devicePixelRatio()});
    return list;
}

std::optional<uint32_t> QtScreens::mainDisplayId() const
{
    if (!qGuiApp || !QGuiApplication::primaryScreen())
        return std::nullopt;
    return idOf(QGuiApplication::primaryScreen());
}

void QtScreens::setChangeHandler(std::function<void()> handler)
{
    handler_ = std::move(handler);
}
