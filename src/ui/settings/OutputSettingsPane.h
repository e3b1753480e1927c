#pragma once

#include "model/OutputTypes.h"
#include "ui/settings/SettingsPane.h"

#include <vector>

class QCheckBox;
class QFormLayout;
class QComboBox;
class QSpinBox;

// Where and how the audience's picture goes: display, aspect and fit, the
// output window, and the video source for other programs.
class OutputSettingsPane : public SettingsPane {
    Q_OBJECT
public:
    explicit OutputSettingsPane(AppModel& model, QWidget* parent = nullptr);

    // The limits of the custom width and height fields, in pixels.
    static constexpr int smallestCustomSide = 1;
    static constexpr int largestCustomSide = 16384;

protected:
    void update() override;

private:
    QSpinBox* makeSizeField(const QString& name);
    void commitCustomSize();

    QFormLayout* screenForm_;
    QComboBox* display_;
    QComboBox* aspect_;
    QSpinBox* width_;
    QSpinBox* height_;
    QComboBox* fit_;
    QCheckBox* showOutput_;
    QCheckBox* onTop_;
    QCheckBox* hideCursor_;
    QCheckBox* publish_;
    QLabel* frameSize_;
    QLabel* sourceStatus_;
    // The displays the picker lists, to rebuild it only when they change.
    std::vector<OutputDisplay> listed_;
};
