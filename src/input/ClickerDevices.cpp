// Which input devices the clicker listens to outside the program.
#include "model/AppModel.h"

#include "platform/PreferencesStore.h"

namespace {
const QString ignoredKey = QStringLiteral("clickerIgnoredDevices");
}

QStringList AppModel::ignoredClickerDeviceIDs() const
{
    if (!services_.preferences)
        return {};
    const QVariant stored = services_.preferences->value(ignoredKey);
    return stored.isValid() ? stored.toStringList() : QStringList();
}

bool AppModel::isClickerDeviceIgnored(const QString& id) const
{
    return ignoredClickerDeviceIDs().contains(id);
}

void AppModel::setClickerDeviceIgnored(const QString& id, bool ignored)
{
    QStringList ids = ignoredClickerDeviceIDs();
    if (ids.contains(id) == ignored)
        return;
    if (ignored)
        ids.append(id);
    else
        ids.removeAll(id);
    ids.sort();
    if (services_.preferences)
        services_.preferences->setValue(ignoredKey, ids);
    clickerDevices.mutate([&](std::vector<ClickerDevice>& devices) {
        for (ClickerDevice& device : devices) {
            if (device.id == id)
                device.ignored = ignored;
        }
    });
}
