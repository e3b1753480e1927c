#pragma once

#include "support/ShownMainWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QTimer>
#include <QtTest>

// The console on a test session, shown, with the look-ups its tests share.
struct ConsoleProbe : ShownMainWindow {
    ConsoleProbe()
    {
        model.interfaceLanguage.set(AppLanguage::english);
        settle();
    }

    // Lets every follower that a change woke run its queued update.
    // Slides come from the engine's workers: a move is settled once its
    // slide has arrived and the followers it woke have run.
    void settle()
    {
        slidesSettled(model);
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
    }

    template <typename W = QWidget>
    W* find(const QString& name) const
    {
        W* widget = window.findChild<W*>(name);
        if (!widget)
            qWarning("no widget named %s", qPrintable(name));
        return widget;
    }
    QString label(const QString& name) const { return find<QLabel>(name)->text(); }
    // The button of the console showing `text`, or null.
    QAbstractButton* button(const QString& text) const { return childWithText<QAbstractButton>(window, text); }

    // Opens a set of PDFs with the given page counts and waits until shown.
    void openSet(std::initializer_list<int> pageCounts)
    {
        QStringList files;
        int n = 0;
        for (int pages : pageCounts)
            files << pdf(QStringLiteral("deck%1.pdf").arg(++n), pages);
        model.replacePlaylist(files);
        settle();
    }

    // Opens the context menu that `open` pops up and picks the entry showing
    // `text`; false when no menu or no such entry appeared.
    static bool pickFromMenu(const std::function<void()>& open, const QString& text)
    {
        auto picked = std::make_shared<bool>(false);
        QTimer::singleShot(0, [picked, text] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            for (QAction* action : menu->actions())
                if (action->text() == text) {
                    *picked = true;
                    action->trigger();
                }
            menu->close();
        });
        open();
        return *picked;
    }
};
