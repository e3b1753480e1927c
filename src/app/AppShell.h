#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>

class AboutWindow;
class AppCommands;
class AppModel;
class MainWindow;
class SettingsWindow;

// The program's windows: the console ("operator"), the About window ("about")
// and the settings window, each a single window that opening again raises.
// Closing the console ends the program, the output window with it.
class AppShell : public QObject {
    Q_OBJECT
public:
    explicit AppShell(AppModel& model, QObject* parent = nullptr);
    ~AppShell() override;

    MainWindow* console() const { return console_; }
    AppCommands* commands() const { return commands_; }
    // Null until first opened.
    AboutWindow* about() const;
    SettingsWindow* settings() const;

    void showConsole();
    void showAbout();
    void showSettings();
    // Files handed over by the file manager or another launch: like a drop.
    void openFiles(const QStringList& paths);

    // What ending the program does (tests record it instead).
    std::function<void()> quit;

signals:
    // The program became active or inactive: the clicker re-arms here.
    void activated();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void onActivation();

    AppModel& model_;
    MainWindow* console_;
    AppCommands* commands_;
    QPointer<AboutWindow> about_;
    QPointer<SettingsWindow> settings_;
};
