#include "ClickerAccessRule.h"

#include <QStringList>

#include <set>
#include <utility>

namespace ClickerAccessRule {

QString text(const std::vector<Remote>& remotes)
{
    QString out = QStringLiteral("# Presenter remotes readable by the person at the seat, for PDF Brelvonic.\n");
    std::set<std::pair<uint16_t, uint16_t>> written;
    for (const Remote& remote : remotes) {
        if (!written.insert({remote.vendor, remote.product}).second)
            continue;
        // Names come from the device: keep the comment on one line.
        QString name = remote.name;
        name.replace(QLatin1Char('\n'), QLatin1Char(' ')).replace(QLatin1Char('\r'), QLatin1Char(' '));
        out += QStringLiteral("# %1\n").arg(name);
        out += QStringLiteral("SUBSYSTEM==\"input\", KERNEL==\"event*\", ATTRS{id/vendor}==\"%1\", "
                              "ATTRS{id/product}==\"%2\", TAG+=\"uaccess\"\n")
                   .arg(remote.vendor, 4, 16, QLatin1Char('0'))
                   .arg(remote.product, 4, 16, QLatin1Char('0'));
    }
    return out;
}

QStringList installCommand(const QString& ruleFile)
{
    // The file name is ours (a temporary file), passed as an argument, never
    // spliced into the script.
    return {QStringLiteral("/bin/sh"), QStringLiteral("-c"),
            QStringLiteral("install -m 0644 \"$1\" %1 && udevadm control --reload && "
                           "udevadm trigger --subsystem-match=input --action=change")
                .arg(QString::fromLatin1(installedPath)),
            QStringLiteral("sh"), ruleFile};
}

}  // namespace ClickerAccessRule
