#include "DecimalText.h"

#include <limits>

namespace DecimalText {

// A decimal integer: optional sign, one or more ASCII digits, nothing else,
// within the signed 64-bit range.
std::optional<qint64> parseInt64(const QString& text)
{
    qsizetype i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) {
        negative = text[i] == u'-';
        ++i;
    }
    if (i >= text.size())
        return std::nullopt;
    // Accumulate toward the negative side, which holds the larger magnitude.
    qint64 value = 0;
    for (; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c < u'0' || c > u'9')
            return std::nullopt;
        const int digit = c.unicode() - u'0';
        if (value < (std::numeric_limits<qint64>::min() + digit) / 10)
            return std::nullopt;
        value = value * 10 - digit;
    }
    if (!negative) {
        if (value == std::numeric_limits<qint64>::min())
            return std::nullopt;
        value = -value;
    }
    return value;
}

}
