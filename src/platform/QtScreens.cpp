#include "QtScreens.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

namespace {
// FNV-1a over the UTF-8 of the fields, each closed by a separator so that
// fields cannot run into each other.
uint32_t hashFields(std::initializer_list<QString> fields)
{
    uint32_t hash = 2166136261u;
    for (const QString& part : fields) {
        const QByteArray bytes = part.toUtf8() + '\x1f';
        for (const char c : bytes) {
            hash ^= static_cast<unsigned char>(c);
            hash *= 16777619u;
        }
    }
    return hash;
}

uint32_t nonZero(uint32_t hash) { return hash == 0 ? 1 : hash; }

// Every screen with its identifier. Some displays report the same serial as
// their twins; a clash falls back to telling them apart by connector.
std::vector<std::pair<QScreen*, uint32_t>> identified()
{
    std::vector<std::pair<QScreen*, uint32_t>> list;
    if (!qGuiApp)
        return list;
    for (QScreen* screen : QGuiApplication::screens()) {
        uint32_t id = QtScreens::identifierOf(screen->name(), screen->manufacturer(), screen->model(),
                                              screen->serialNumber());
        if (std::any_of(list.begin(), list.end(), [&](const auto& earlier) { return earlier.second == id; }))
            id = nonZero(hashFields({QStringLiteral("twin"), screen->name(), screen->manufacturer(), screen->model(),
                                     screen->serialNumber()}));
        list.emplace_back(screen, id);
    }
    return list;
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
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &QtScreens::changed);
    connect(qGuiApp, &QGuiApplication::primaryScreenChanged, this, &QtScreens::changed);
}

uint32_t QtScreens::identifierOf(const QString& connector, const QString& manufacturer, const QString& model,
                                 const QString& serial)
{
    const QString trimmedSerial = serial.trimmed();
    const uint32_t hash = trimmedSerial.isEmpty() ? hashFields({QStringLiteral("port"), connector, manufacturer, model})
                                                  : hashFields({QStringLiteral("edid"), manufacturer, model, trimmedSerial});
    return nonZero(hash);
}

QString QtScreens::displayName(const QString& connector, const QString& manufacturer, const QString& model)
{
    const QString product = (manufacturer.trimmed() + QLatin1Char(' ') + model.trimmed()).trimmed();
    if (model.trimmed().isEmpty() || product.isEmpty())
        return connector;
    if (connector.isEmpty())
        return product;
    return product + QStringLiteral(" (") + connector + QLatin1Char(')');
}

void QtScreens::watch(QScreen* screen)
{
    // Unique: the primary screen is watched at start and may be announced again.
    connect(screen, &QScreen::geometryChanged, this, &QtScreens::changed, Qt::UniqueConnection);
    connect(screen, &QScreen::logicalDotsPerInchChanged, this, &QtScreens::changed, Qt::UniqueConnection);
    connect(screen, &QScreen::physicalDotsPerInchChanged, this, &QtScreens::changed, Qt::UniqueConnection);
}

void QtScreens::changed()
{
    if (handler_)
        handler_();
}

std::vector<PlatformScreen> QtScreens::screens() const
{
    std::vector<PlatformScreen> list;
    for (const auto& [screen, id] : identified())
        list.push_back(PlatformScreen{id, displayName(screen->name(), screen->manufacturer(), screen->model()),
                                      QRectF(screen->geometry()), screen->devicePixelRatio()});
    return list;
}

std::optional<uint32_t> QtScreens::mainDisplayId() const
{
    if (!qGuiApp)
        return std::nullopt;
    for (const auto& [screen, id] : identified())
        if (screen == QGuiApplication::primaryScreen())
            return id;
    return std::nullopt;
}

void QtScreens::setChangeHandler(std::function<void()> handler)
{
    handler_ = std::move(handler);
}
