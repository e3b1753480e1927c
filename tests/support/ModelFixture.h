#pragma once

#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "support/TestSession.h"

#include <QCoreApplication>
#include <QTest>

// The setups most model tests share, unpacked in one line:
//     auto&& [platform, model] = FakeModel();
//     auto&& [folder, platform, model] = ModelFixture();  // with a folder for PDFs
struct FakeModel {
    FakePlatform platform;
    AppModel model{platform.services()};
};

// The same three members as a test session, in the same order.
using ModelFixture = TestSession;

// Where the operator stands, for one comparison: "entry:page/pages".
inline QString position(const AppModel& model)
{
    return QStringLiteral("%1:%2/%3").arg(model.playlistIndex()).arg(model.pageIndex()).arg(model.pageCount());
}

// What `byPage` (strokesByPage or framesByPage) holds for page `key`; none
// when the page has no marks.
template <typename ByPage>
const auto& marksOn(const ByPage& byPage, const QString& key)
{
    static const typename std::decay_t<decltype(byPage.peek())>::mapped_type none;
    const auto it = byPage.peek().find(key);
    return it == byPage.peek().end() ? none : it->second;
}

// Runs the main loop until the slides the last move asked the engine's
// workers for have reached the stage and the output.
inline bool slidesSettled(const AppModel& model)
{
    return QTest::qWaitFor([&] { return !model.isAwaitingSlide(); }, 20000);
}

// Runs the thumbnail pass to its end: the workers' answers and the model's
// turns on the fake scheduler.
inline bool thumbnailsDone(AppModel& model, FakeScheduler& scheduler)
{
    return QTest::qWaitFor(
        [&] {
            scheduler.runPending();
            return static_cast<int>(model.thumbnails().size()) >= model.pageCount();
        },
        20000);
}
