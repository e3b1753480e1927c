#pragma once

#include <QWidget>

#include <functional>
#include <vector>

class AppModel;
class QAbstractButton;
class QFormLayout;
class QGroupBox;
class QLabel;
class QVBoxLayout;
namespace obs { class Follower; }

// One tab of the settings window: a column of titled sections, each a form of
// labelled rows. The texts named by key are looked up again whenever the
// language changes, and `update` brings the controls in line with the model
// whenever anything it read changes.
class SettingsPane : public QWidget {
    Q_OBJECT
public:
    explicit SettingsPane(AppModel& model, QWidget* parent = nullptr);

    // Greys a label's text down to a second rank, readable on any palette.
    static void makeSecondary(QLabel* label);

protected:
    // Adds a widget below what the pane holds so far.
    void place(QWidget* widget);
    // A section titled by `titleKey` (none when empty), or by `literalTitle`.
    QFormLayout* addSection(const QString& titleKey, const QString& literalTitle = {});
    // A row whose label is looked up by `key`; returns the label.
    QLabel* addRow(QFormLayout* form, const QString& key, QWidget* field);
    // A grey explanatory text across the whole form; without a key the pane
    // sets its text itself.
    QLabel* addHelp(QFormLayout* form, const QString& key = {});
    // Keeps the text of a label or button on `key` in the current language.
    void keepText(QLabel* label, const QString& key);
    void keepText(QAbstractButton* button, const QString& key);
    // Starts following the model; subclasses call it last in their constructor.
    void follow();
    // Reads the model and sets every control; runs under change tracking.
    virtual void update() = 0;

    AppModel& model_;
    QVBoxLayout* column_;

private:
    std::vector<std::function<void()>> relabels_;
    obs::Follower* follower_ = nullptr;
};
