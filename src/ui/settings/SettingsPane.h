#pragma once

#include <QComboBox>
#include <QWidget>

#include <array>
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
    // Runs `relabel` whenever the language changes (and once at the start).
    void keepTexts(std::function<void()> relabel) { relabels_.push_back(std::move(relabel)); }
    // A row with a picker over `values`, each shown by `title` (looked up
    // again on a language switch); the operator's choice goes to `choose`.
    template <typename E, std::size_t N>
    QComboBox* addPicker(QFormLayout* form, const QString& labelKey, const QString& name, const std::array<E, N>& values,
                         std::function<QString(E)> title, std::function<void(E)> choose)
    {
        auto* picker = new QComboBox(this);
        picker->setObjectName(name);
        for (E value : values)
            picker->addItem(QString(), static_cast<int>(value));
        keepTexts([picker, values, title] {
            for (std::size_t i = 0; i < N; ++i)
                picker->setItemText(int(i), title(values[i]));
        });
        addRow(form, labelKey, picker);
        connect(picker, &QComboBox::activated, this,
                [picker, choose](int index) { choose(static_cast<E>(picker->itemData(index).toInt())); });
        return picker;
    }
    // Shows `value` as the picker's current choice.
    template <typename E>
    static void showChoice(QComboBox* picker, E value)
    {
        picker->setCurrentIndex(picker->findData(static_cast<int>(value)));
    }
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
