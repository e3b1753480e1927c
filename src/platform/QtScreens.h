#pragma once

#include "platform/Screens.h"

#include <QObject>

class QScreen;

// The displays as Qt sees them. A display's identifier is a 32-bit FNV-1a
// hash of its connector name, manufacturer, model and serial number, so the
// same display keeps it across runs and re-plugging (never 0).
class QtScreens final : public QObject, public Screens {
public:
    QtScreens();
    std::vector<PlatformScreen> screens() const override;
    std::optional<uint32_t> mainDisplayId() const override;
    void setChangeHandler(std::function<void()> handler) override;

    static uint32_t identifierOf(const QString& name, const QString& manufacturer, const QString& model,
                                 const QString& serial);

private:
    void watch(QScreen* screen);
    void changed();

    std::function<void()> handler_;
};
