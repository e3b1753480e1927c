#pragma once

#include <QWidget>

class AppModel;
class QVBoxLayout;
namespace obs { class Follower; }

// One part of the console: a view of the model kept in step by its own
// follower. `refresh` reads the model under tracking, so anything it reads
// (texts included, which read the language) brings it back once changed.
class ConsolePart : public QWidget {
    Q_OBJECT

public:
    explicit ConsolePart(AppModel& model, QWidget* parent = nullptr);
    // How often this part has brought itself up to date (for tests).
    int refreshCount() const;

protected:
    // Called at the end of a part's constructor, once its children exist.
    void startFollowing();
    virtual void refresh() = 0;
    // Starts a sidebar section: a column headed by the section's title.
    QVBoxLayout* beginSection(const QString& titleKey, const QString& iconName, const QColor& tint);

    AppModel& model_;

private:
    obs::Follower* follower_ = nullptr;
};
