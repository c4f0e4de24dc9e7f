// Looking for recognisers, and choosing among them. What the windows show of it is tested there.

#include "NearRecognisers.h"

#include "ScriptedServer.h"
#include "WaitUntil.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class NearRecognisersTest : public ::testing::Test {
  protected:
    bool isDone() {
        return waitUntil([this] { return !near.isAtWork(); });
    }

    ScriptedServer server;
    NearRecognisers near{server.environment};
};

TEST_F(NearRecognisersTest, nothingIsKnownBeforeALookOrWithoutAServer) {
    EXPECT_FALSE(near.list());
    near.refresh();
    EXPECT_TRUE(near.isAtWork());
    ASSERT_TRUE(isDone());
    EXPECT_FALSE(near.list());
    server.place("true");
    near.refresh();
    ASSERT_TRUE(isDone());
    EXPECT_TRUE(near.list());
    server.place("exit 2"); // It was replaced by one that knows nothing of this.
    near.refresh();
    ASSERT_TRUE(isDone());
    EXPECT_FALSE(near.list());
}

TEST_F(NearRecognisersTest, aChangeThatFailsSaysWhyUntilTheNextOne) {
    server.place(
        "[ \"$2\" = list ] || { echo '{\"state\":\"notice\",\"text\":\"no room\",\"notice\":"
        "{\"code\":\"recognition.near_file\",\"parameters\":{}}}'; exit 1; }");
    near.accept({.kind = u"listen"_s, .address = u"ws://a"_s});
    ASSERT_TRUE(isDone());
    ASSERT_EQ(near.problems().size(), 1);
    EXPECT_EQ(near.problems()[0].message, u"no room"_s);
    EXPECT_TRUE(near.list());
    near.refresh();
    ASSERT_TRUE(isDone());
    EXPECT_TRUE(near.problems().isEmpty());
}

TEST_F(NearRecognisersTest, oneThingIsDoneAtATime) {
    server.place("echo \"$@\" >> \"$(dirname \"$0\")/asked\"");
    near.refresh();
    near.accept({.kind = u"listen"_s, .address = u"ws://a"_s});
    near.forget({.name = u"A"_s});
    ASSERT_TRUE(isDone());
    QFile asked(server.folder.filePath(u"asked"_s));
    ASSERT_TRUE(asked.open(QIODevice::ReadOnly));
    EXPECT_TRUE(asked.readAll().endsWith("recognisers.py list\n"));
    EXPECT_EQ(asked.size(), asked.pos());
}

} // namespace

} // namespace orv::test
