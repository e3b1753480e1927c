#pragma once

#include <QString>

#include <optional>

namespace DecimalText {
// A decimal integer: an optional "+" or "-", one or more ASCII digits and
// nothing else, within the signed 64-bit range.
std::optional<qint64> parseInt64(const QString& text);
}
