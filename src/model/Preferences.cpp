// Settings that survive a restart.
#include "model/AppModel.h"

#include "model/ShowSettings.h"

#include "platform/PreferencesStore.h"
#include "platform/RecentDocuments.h"

#include <cmath>
#include <limits>

namespace {

// Values come back from the store as text (INI files) or typed; read both.
// "inf" and "nan" parse as numbers but are none: an endless fade would keep
// the old slide on the output for good.
std::optional<double> toDouble(const QVariant& v)
{
    if (!v.isValid())
        return std::nullopt;
    bool ok = false;
    const double d = v.toDouble(&ok);
    return ok && std::isfinite(d) ? std::optional<double>(d) : std::nullopt;
}

std::optional<qint64> toInteger(const QVariant& v)
{
    if (!v.isValid())
        return std::nullopt;
    bool ok = false;
    const qint64 i = v.toLongLong(&ok);
    return ok ? std::optional<qint64>(i) : std::nullopt;
}

std::optional<bool> toBool(const QVariant& v)
{
    if (!v.isValid())
        return std::nullopt;
    if (v.typeId() == QMetaType::Bool)
        return v.toBool();
    const QString text = v.toString().trimmed().toLower();
    if (text == u"true" || text == u"1")
        return true;
    if (text == u"false" || text == u"0")
        return false;
    return std::nullopt;
}

}

ShowSettings AppModel::showSettings() const
{
    const MarkColor color = markColor.peek();
    ShowSettings s;
    s.aspect = aspectModes.rawValue(aspect.peek());
    s.contentFit = contentFits.rawValue(contentFit.peek());
    s.customWidth = customWidth.peek();
    s.customHeight = customHeight.peek();
    s.transitionStyle = transitionStyles.rawValue(transitionStyle.peek());
    s.transitionDuration = transitionDuration.peek();
    s.plannedDuration = plannedDuration.peek();
    s.hideOutputCursor = hideOutputCursor.peek();
    s.markRed = color.red;
    s.markGreen = color.green;
    s.markBlue = color.blue;
    return s;
}

void AppModel::applyShowSettings(const ShowSettings& s)
{
    const auto usable = [](const auto& value, const auto& table) {
        return value ? table.fromRaw(*value) : std::nullopt;
    };
    const auto pixelCount = [](const std::optional<qint64>& n) {
        return n && *n >= 1 && *n <= std::numeric_limits<int>::max() ? std::optional<int>(int(*n)) : std::nullopt;
    };
    const auto finite = [](const std::optional<double>& d) {
        return d && std::isfinite(*d) ? d : std::nullopt;
    };
    if (auto mode = usable(s.aspect, aspectModes))
        aspect.set(*mode);
    if (auto fit = usable(s.contentFit, contentFits))
        contentFit.set(*fit);
    if (auto w = pixelCount(s.customWidth))
        customWidth.set(*w);
    if (auto h = pixelCount(s.customHeight))
        customHeight.set(*h);
    if (auto style = usable(s.transitionStyle, transitionStyles))
        transitionStyle.set(*style);
    // An endless fade would keep the old slide on the output for good.
    if (auto d = finite(s.transitionDuration); d && *d > 0)
        transitionDuration.set(*d);
    plannedDuration.set(finite(s.plannedDuration).value_or(0));
    if (s.hideOutputCursor)
        hideOutputCursor.set(*s.hideOutputCursor);
    if (auto red = finite(s.markRed))
        markColor.set(MarkColor{*red, finite(s.markGreen).value_or(0), finite(s.markBlue).value_or(0)});
}

void AppModel::persistPreferences()
{
    PreferencesStore* store = services_.preferences.get();
    if (!store)
        return;
    const ShowSettings settings = showSettings();
    ShowSettings::forEach(settings, [store](const char* key, const auto& value) {
        store->setValue(QString::fromLatin1(key), QVariant::fromValue(*value));
    });
    store->setValue(QStringLiteral("outputAlwaysOnTop"), outputAlwaysOnTop.peek());
    store->setValue(QStringLiteral("isSyphonEnabled"), isSyphonEnabled.peek());
    store->setValue(QStringLiteral("interfaceLanguage"), appLanguages.rawValue(interfaceLanguage.peek()));
    if (const auto id = selectedDisplayID.peek())
        store->setValue(QStringLiteral("selectedDisplayID"), qulonglong(*id));
}

void AppModel::restorePreferences()
{
    PreferencesStore* store = services_.preferences.get();
    if (!store)
        return;
    const auto read = [store](const char* key) { return store->value(QString::fromLatin1(key)); };

    ShowSettings stored;
    ShowSettings::forEach(stored, [&read](const char* key, auto& value) {
        const QVariant v = read(key);
        using T = typename std::decay_t<decltype(value)>::value_type;
        if constexpr (std::is_same_v<T, QString>)
            value = v.isValid() ? std::optional<QString>(v.toString()) : std::nullopt;
        else if constexpr (std::is_same_v<T, qint64>)
            value = toInteger(v);
        else if constexpr (std::is_same_v<T, double>)
            value = toDouble(v);
        else
            value = toBool(v);
    });
    applyShowSettings(stored);
    if (auto onTop = toBool(read("outputAlwaysOnTop")))
        outputAlwaysOnTop.set(*onTop);
    if (auto enabled = toBool(read("isSyphonEnabled")))
        isSyphonEnabled.set(*enabled);
    // Always applied, so from the first run on the store holds a valid language.
    const auto language = appLanguages.fromRaw(read("interfaceLanguage").toString());
    interfaceLanguage.set(language.value_or(AppLanguages::detected()));
    // An identifier outside 32 bits cannot name a display: ignore it.
    if (auto id = toInteger(read("selectedDisplayID")); id && *id >= 1 && *id <= 4294967295LL)
        selectedDisplayID.set(uint32_t(*id));
}

void AppModel::clearRecentFiles()
{
    if (!services_.recents)
        return;
    services_.recents->clear();
    recentFiles.set(services_.recents->list());
}
