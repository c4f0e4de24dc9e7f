// Runs of the speech server's programs, with a shell script in the interpreter's place.

#include "ServerTool.h"

#include "ScriptedServer.h"
#include "WaitUntil.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class ServerToolTest : public ::testing::Test {
  protected:
    ServerToolTest() {
        QObject::connect(
            &tool, &ServerTool::ended, &tool,
            [this](int status, const QByteArray& printed) { ends.emplace_back(status, printed); });
    }

    bool ended() {
        return waitUntil([this] { return !ends.empty(); });
    }

    ScriptedServer server;
    std::vector<std::pair<int, QByteArray>> ends;
    ServerTool tool{server.environment};
};

TEST_F(ServerToolTest, givesWhatAProgramPrintedAndHowItEnded) {
    server.place("printf '%s|' \"$@\"; echo \"$XDG_CACHE_HOME\"; echo wrong >&2; exit 3");
    tool.run(u"a.py"_s, {u"b c"_s});
    EXPECT_TRUE(tool.isRunning());
    ASSERT_TRUE(ended());
    EXPECT_EQ(ends[0].first, 3);
    const QByteArray folder = server.folder.path().toUtf8();
    EXPECT_EQ(ends[0].second, folder + "/backend/a.py|b c|" + folder + "/cache\nwrong\n");
    EXPECT_FALSE(tool.isRunning());
}

TEST_F(ServerToolTest, saysWhyAProgramCannotBeRun) {
    tool.run(u"a.py"_s, {});
    EXPECT_TRUE(ends.empty()) << "whoever has called is not done";
    ASSERT_TRUE(ended());
    EXPECT_EQ(ends[0].first, -1);
    EXPECT_FALSE(ends[0].second.isEmpty());
}

TEST_F(ServerToolTest, gathersNoMoreThanAnybodyNeeds) {
    server.place("head -c 3000000 /dev/zero");
    tool.run(u"a.py"_s, {});
    ASSERT_TRUE(ended());
    EXPECT_GE(ends[0].second.size(), 1 << 20);
    EXPECT_LT(ends[0].second.size(), 2 << 20);
}

TEST_F(ServerToolTest, canBeUsedAgain) {
    server.place("echo \"$2\"");
    tool.run(u"a.py"_s, {u"1"_s});
    ASSERT_TRUE(ended());
    ends.clear();
    tool.run(u"a.py"_s, {u"2"_s});
    ASSERT_TRUE(ended());
    EXPECT_EQ(ends[0].second, "2\n");
}

TEST_F(ServerToolTest, endsWhatRunsWhenItIsGone) {
    server.place(
        "trap 'touch \"$(dirname \"$0\")/ended\"; exit' TERM; touch \"$(dirname \"$0\")/begun\"; "
        "while :; do :; done");
    auto other = std::make_unique<ServerTool>(server.environment);
    other->run(u"a.py"_s, {});
    ASSERT_TRUE(waitUntil([this] { return server.has(u"begun"_s); }));
    other.reset();
    EXPECT_TRUE(server.has(u"ended"_s));
}

} // namespace

} // namespace orv::test
