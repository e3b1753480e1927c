#pragma once

#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "support/TestSession.h"

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
