#pragma once

#include "platform/Screens.h"

#include <QObject>

class QScreen;

// The displays as Qt sees them.
//
// Identifier: a 32-bit FNV-1a hash (never 0). A display whose EDID gives a
// serial number is hashed from its manufacturer, model and serial, so it keeps
// its identifier across runs and when it is plugged into another connector.
// Without a serial (many projectors, virtual screens) the connector name takes
// the serial's place, so that two identical displays still differ; such a
// display keeps its identifier as long as it stays on the same connector.
// Twins reporting the same serial are told apart by connector as well.
class QtScreens final : public QObject, public Screens {
    Q_OBJECT

public:
    QtScreens();
    std::vector<PlatformScreen> screens() const override;
    std::optional<uint32_t> mainDisplayId() const override;
    void setChangeHandler(std::function<void()> handler) override;

    static uint32_t identifierOf(const QString& connector, const QString& manufacturer, const QString& model,
                                 const QString& serial);
    // "DELL U2415 (DP-1)", or the connector name alone when the display does
    // not say what it is.
    static QString displayName(const QString& connector, const QString& manufacturer, const QString& model);

private:
    void watch(QScreen* screen);
    void changed();

    std::function<void()> handler_;
};
