#pragma once

#include <QString>

#include <cstdint>
#include <vector>

// The udev rule that lets the person at the seat read chosen remotes: one
// line per vendor and product, tagged for seat access. Sorted before the
// rule that applies seat access, so the tag takes effect.
namespace ClickerAccessRule {

struct Remote {
    uint16_t vendor = 0;
    uint16_t product = 0;
    QString name;
};

// Where an installed rule goes.
inline const char* installedPath = "/etc/udev/rules.d/70-pdf-brelvonic-local.rules";

QString text(const std::vector<Remote>& remotes);

// The command pkexec runs as root to put `ruleFile` in place and apply it.
QStringList installCommand(const QString& ruleFile);

}  // namespace ClickerAccessRule
