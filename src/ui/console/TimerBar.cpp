#include "ui/console/TimerBar.h"

#include "base/TimeFormat.h"
#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleStyle.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>

TimerBar::TimerBar(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 4, 12, 4);
    layout->setSpacing(14);
    auto* symbol = new QLabel(this);
    symbol->setPixmap(ConsoleStyle::icon(QStringLiteral("appointment-soon")).pixmap(22, 22));
    clock_ = new QLabel(this);
    clock_->setObjectName(QStringLiteral("timeOfDay"));
    elapsed_ = new QLabel(this);
    elapsed_->setObjectName(QStringLiteral("elapsed"));
    left_ = new QLabel(this);
    left_->setObjectName(QStringLiteral("timeLeft"));
    for (QLabel* label : {clock_, elapsed_, left_}) {
        QFont font(QStringLiteral("DejaVu Sans Mono"));
        font.setStyleHint(QFont::Monospace);
        font.setPointSizeF(label->font().pointSizeF() * 1.6);
        font.setBold(true);
        label->setFont(font);
    }
    pause_ = new QToolButton(this);
    pause_->setObjectName(QStringLiteral("timerPause"));
    pause_->setIconSize(QSize(22, 22));
    pause_->setFocusPolicy(Qt::NoFocus);
    reset_ = new QPushButton(ConsoleStyle::icon(QStringLiteral("view-refresh")), QString(), this);
    reset_->setObjectName(QStringLiteral("timerReset"));
    reset_->setFocusPolicy(Qt::NoFocus);
    connect(pause_, &QToolButton::clicked, this, [this] { model_.toggleTimer(); });
    connect(reset_, &QPushButton::clicked, this, [this] { model_.resetTimer(); });
    layout->addWidget(symbol);
    layout->addWidget(clock_);
    layout->addWidget(elapsed_);
    layout->addWidget(left_);
    layout->addStretch(1);
    layout->addWidget(pause_);
    layout->addWidget(reset_);
    // Elapsed time is computed from the clock on every read, never counted
    // by this tick, so a late tick loses nothing.
    ticker_ = new QTimer(this);
    ticker_->setInterval(250);
    connect(ticker_, &QTimer::timeout, this, &TimerBar::tick);
    ticker_->start();
    startFollowing();
}

void TimerBar::tick()
{
    const double now = model_.services().scheduler ? model_.services().scheduler->now()
                                                   : double(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(qint64(now * 1000.0));
    clock_->setText(AppLanguages::locale(AppLanguages::current()).toString(time.time(), QLocale::ShortFormat));
    elapsed_->setText(TimeFormat::duration(model_.timerElapsed()));
    const auto remaining = model_.timerRemaining();
    left_->setVisible(remaining.has_value());
    if (remaining) {
        left_->setText(L10n::t(QStringLiteral("timer.left"), TimeFormat::duration(*remaining)));
        QPalette palette = left_->palette();
        palette.setColor(QPalette::WindowText, *remaining < 60 ? ConsoleStyle::orange() : QColor(170, 172, 180));
        left_->setPalette(palette);
    }
}

void TimerBar::refresh()
{
    const bool running = model_.isTimerRunning();
    pause_->setIcon(ConsoleStyle::icon(running ? QStringLiteral("media-playback-pause") : QStringLiteral("media-playback-start")));
    pause_->setToolTip(L10n::t(running ? QStringLiteral("timer.pause") : QStringLiteral("timer.resume")));
    reset_->setText(L10n::t(QStringLiteral("reset")));
    tick();
}
