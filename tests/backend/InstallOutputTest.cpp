#include "InstallOutput.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

TEST(InstallOutput, putsLinesTogetherFromPieces) {
    InstallOutput output;
    EXPECT_EQ(output.take("==> Ma"), QStringList());
    EXPECT_EQ(output.take("king it\nerror: no"), QStringList{u"Making it"_s});
    EXPECT_EQ(output.take("pe\n\n"), (QStringList{u"nope"_s, QString()}));
}

TEST(InstallOutput, takesCharactersThatArriveInTwoPieces) {
    InstallOutput output;
    output.take("gr\xc3");
    EXPECT_EQ(output.take("\xbc\x6e\n"), QStringList{u"grün"_s});
}

TEST(InstallOutput, knowsTheStepFromTheMarkedLines) {
    InstallOutput output;
    EXPECT_EQ(output.step(), QString());
    output.take("==> [1/3] Looking\n");
    EXPECT_EQ(output.step(), u"1/3"_s);
    output.take("==> Nothing to do [9/9]\n");
    EXPECT_EQ(output.step(), u"1/3"_s);
    output.take("==> [2/3] Making\n");
    EXPECT_EQ(output.step(), u"2/3"_s);
}

TEST(InstallOutput, knowsHowMuchOfADownloadIsThereUntilTheNextStep) {
    InstallOutput output;
    EXPECT_EQ(output.percent(), std::nullopt);
    output.take("==> 3 % of 150 MB\n");
    EXPECT_EQ(output.percent(), 3);
    output.take("==> about 37 % of people\n9 files\n");
    EXPECT_EQ(output.percent(), 3);
    output.take("==> 100 % of 150 MB\n");
    EXPECT_EQ(output.percent(), 100);
    output.take("==> 999 % of 150 MB\n");
    EXPECT_EQ(output.percent(), 100);
    output.take("==> [6/7] Trying it\n");
    EXPECT_EQ(output.percent(), std::nullopt);
}

TEST(InstallOutput, theLastLineIsTheLastWithSomethingOnIt) {
    InstallOutput output;
    EXPECT_EQ(output.lastLine(), QString());
    output.take("==> one\nerror: The disk is full.\n  \n");
    EXPECT_EQ(output.lastLine(), u"The disk is full."_s);
    output.take("and no line feed");
    EXPECT_EQ(output.lastLine(), u"and no line feed"_s);
}

} // namespace

} // namespace orv::test
