// Settings that survive a restart.
#include "model/AppModel.h"

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

std::optional<qlonglong> toInteger(const QVariant& v)
{
    if (!v.isValid())
        return std::nullopt;
    bool ok = false;
    const qlonglong i = v.toLongLong(&ok);
    return ok ? std::optional<qlonglong>(i) : std::nullopt;
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

void AppModel::persistPreferences()
{
    PreferencesStore* store = services_.preferences.get();
    if (!store)
        return;
    const MarkColor color = markColor.peek();
    store->setValue(QStringLiteral("aspect"), aspectModes.rawValue(aspect.peek()));
    store->setValue(QStringLiteral("contentFit"), contentFits.rawValue(contentFit.peek()));
    store->setValue(QStringLiteral("customWidth"), customWidth.peek());
    store->setValue(QStringLiteral("customHeight"), customHeight.peek());
    store->setValue(QStringLiteral("outputAlwaysOnTop"), outputAlwaysOnTop.peek());
    store->setValue(QStringLiteral("isSyphonEnabled"), isSyphonEnabled.peek());
    store->setValue(QStringLiteral("transitionStyle"), transitionStyles.rawValue(transitionStyle.peek()));
    store->setValue(QStringLiteral("transitionDuration"), transitionDuration.peek());
    store->setValue(QStringLiteral("plannedDuration"), plannedDuration.peek());
    store->setValue(QStringLiteral("hideOutputCursor"), hideOutputCursor.peek());
    store->setValue(QStringLiteral("interfaceLanguage"), appLanguages.rawValue(interfaceLanguage.peek()));
    store->setValue(QStringLiteral("markRed"), color.red);
    store->setValue(QStringLiteral("markGreen"), color.green);
    store->setValue(QStringLiteral("markBlue"), color.blue);
    if (const auto id = selectedDisplayID.peek())
        store->setValue(QStringLiteral("selectedDisplayID"), qulonglong(*id));
}

void AppModel::restorePreferences()
{
    PreferencesStore* store = services_.preferences.get();
    if (!store)
        return;
    const auto read = [store](const char* key) { return store->value(QString::fromLatin1(key)); };

    if (auto mode = aspectModes.fromRaw(read("aspect").toString()))
        aspect.set(*mode);
    if (auto fit = contentFits.fromRaw(read("contentFit").toString()))
        contentFit.set(*fit);
    if (auto w = toInteger(read("customWidth")); w && *w >= 1 && *w <= std::numeric_limits<int>::max())
        customWidth.set(int(*w));
    if (auto h = toInteger(read("customHeight")); h && *h >= 1 && *h <= std::numeric_limits<int>::max())
        customHeight.set(int(*h));
    if (auto onTop = toBool(read("outputAlwaysOnTop")))
        outputAlwaysOnTop.set(*onTop);
    if (auto enabled = toBool(read("isSyphonEnabled")))
        isSyphonEnabled.set(*enabled);
    if (auto style = transitionStyles.fromRaw(read("transitionStyle").toString()))
        transitionStyle.set(*style);
    if (auto d = toDouble(read("transitionDuration")); d && *d > 0)
        transitionDuration.set(*d);
    plannedDuration.set(toDouble(read("plannedDuration")).value_or(0));
    if (auto hide = toBool(read("hideOutputCursor")))
        hideOutputCursor.set(*hide);
    // Always applied, so from the first run on the store holds a valid language.
    const auto stored = appLanguages.fromRaw(read("interfaceLanguage").toString());
    interfaceLanguage.set(stored.value_or(AppLanguages::detected()));
    if (auto red = toDouble(read("markRed"))) {
        markColor.set(MarkColor{*red, toDouble(read("markGreen")).value_or(0), toDouble(read("markBlue")).value_or(0)});
    }
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

void AppModel::setInterfaceLanguage(AppLanguage language)
{
    interfaceLanguage.set(language);
    persistPreferences();
}
