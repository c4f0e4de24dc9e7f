#include "SpawnProgram.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {

TEST(SpawnProgram, addsAVariableToTheEnvironment) {
    EXPECT_EQ(environmentWith({"A=1"}, "B", "2"), (QList<QByteArray>{"A=1", "B=2"}));
}

TEST(SpawnProgram, replacesAVariableAndLeavesLongerNamesAlone) {
    EXPECT_EQ(environmentWith({"A=1", "AB=x", "C=3"}, "A", "2"),
              (QList<QByteArray>{"AB=x", "C=3", "A=2"}));
}

TEST(SpawnProgram, knowsItsOwnEnvironmentByteForByte) {
    const QByteArray bytes = "\xff\xfe=";
    qputenv("ORV_TEST_BYTES", bytes);
    EXPECT_TRUE(ownEnvironment().contains("ORV_TEST_BYTES=" + bytes));
    qunsetenv("ORV_TEST_BYTES");
    EXPECT_FALSE(ownEnvironment().contains("ORV_TEST_BYTES=" + bytes));
}

TEST(SpawnProgram, tellsWhyAProgramCannotRun) {
    const QTemporaryDir folder;
    ProgramCall call;
    call.program = folder.filePath(u"missing"_s);
    EXPECT_EQ(spawnProgram(call).error, u"No such file or directory"_s);
    call.program = folder.path();
    EXPECT_EQ(spawnProgram(call).error, u"Permission denied"_s);
    EXPECT_LT(spawnProgram(call).pid, 0);
}

TEST(SpawnProgram, refusesADescriptorThatIsNotOpen) {
    ProgramCall call;
    call.program = u"/bin/true"_s;
    call.descriptors = {-1};
    EXPECT_EQ(spawnProgram(call).error, u"Bad file descriptor"_s);
}

} // namespace orv
