#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <optional>
#include <utility>

// Enumerations with stable raw string values: one table gives the order,
// the raw value of each case, and decoding (an unknown raw value gives none).
template <typename E, std::size_t N>
struct RawEnumTable {
    std::array<std::pair<E, const char*>, N> entries;

    QString rawValue(E value) const
    {
        for (const auto& [e, raw] : entries)
            if (e == value)
                return QString::fromLatin1(raw);
        return {};
    }
    std::optional<E> fromRaw(QStringView raw) const
    {
        for (const auto& [e, r] : entries)
            if (raw == QLatin1StringView(r))
                return e;
        return std::nullopt;
    }
    std::array<E, N> all() const
    {
        std::array<E, N> out{};
        for (std::size_t i = 0; i < N; ++i)
            out[i] = entries[i].first;
        return out;
    }
};
