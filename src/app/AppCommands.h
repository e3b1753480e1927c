#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <vector>

class AppModel;
class QAction;
class QKeySequence;
class QMainWindow;
class QMenu;
namespace obs { class Follower; }

// The menu commands and their shortcuts, installed on the menu bar of the
// window the shell gives. Each command ends in one operation of the model (or
// opens one of the shell's windows); texts and enablement follow the model.
class AppCommands : public QObject {
    Q_OBJECT
public:
    // What the shell does for the commands that open its windows.
    struct Windows {
        std::function<void()> showAbout;
        std::function<void()> showSettings;
    };

    AppCommands(AppModel& model, QMainWindow& window, Windows windows = {});

    // The command labelled by text key `key`, or null.
    QAction* command(const QString& key) const;
    QMenu* fileMenu() const { return fileMenu_; }
    QMenu* recentMenu() const { return recentMenu_; }
    QMenu* showMenu() const { return showMenu_; }
    QMenu* helpMenu() const { return helpMenu_; }

private:
    // A menu command: its text key, and when it can act (always when empty).
    struct Command {
        QAction* action;
        QString key;
        std::function<bool()> enabled;
    };
    QAction* add(QMenu* menu, const QString& key, const QKeySequence& shortcut, std::function<void()> run,
                 std::function<bool()> enabled = {});
    void update();
    // The recent files, or the one disabled "No recent files" line.
    void fillRecentMenu();

    AppModel& model_;
    QMenu* fileMenu_;
    QMenu* recentMenu_;
    QMenu* showMenu_;
    QMenu* helpMenu_;
    std::vector<Command> commands_;
    obs::Follower* follower_;
};
