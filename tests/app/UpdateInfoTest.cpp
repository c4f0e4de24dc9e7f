#include "UpdateInfo.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

TEST(UpdateInfo, readsAllThreeTexts) {
    const auto decoded = decodeUpdateInfo(
        R"({"version": "4.2.1", "url": "https://example.org/d", "notes": "Änderungen", "x": 1})");
    EXPECT_EQ(decoded.error, QString());
    EXPECT_EQ(decoded.info.version, u"4.2.1"_s);
    EXPECT_EQ(decoded.info.url, u"https://example.org/d"_s);
    EXPECT_EQ(decoded.info.notes, u"Änderungen"_s);
}

TEST(UpdateInfo, needsNoNotes) {
    EXPECT_EQ(decodeUpdateInfo(R"({"version": "1", "url": "u"})").info.notes, QString());
    const auto decoded = decodeUpdateInfo(R"({"version": "1", "url": "u", "notes": null})");
    EXPECT_EQ(decoded.error, QString());
    EXPECT_EQ(decoded.info.notes, QString());
}

class NoUpdateInfo : public ::testing::TestWithParam<const char*> {};

TEST_P(NoUpdateInfo, isAnErrorThatSaysWhy) {
    EXPECT_NE(decodeUpdateInfo(GetParam()).error, QString());
}

INSTANTIATE_TEST_SUITE_P(Bodies, NoUpdateInfo,
                         ::testing::Values("", "<html></html>", "[]", "\"4.2\"", "{}",
                                           R"({"version": "1"})", R"({"url": "u"})",
                                           R"({"version": 4.2, "url": "u"})",
                                           R"({"version": "1", "url": 7})",
                                           R"({"version": "1", "url": "u", "notes": 1})",
                                           R"({"version": "1", "url": "u")",
                                           R"({"version": "1\n2", "url": "u"})",
                                           R"({"version": "\u20281", "url": "u"})"));

TEST(UpdateInfo, takesNoVersionThatNobodyCanRead) {
    const QByteArray longVersion = "{\"version\": \"" + QByteArray(65, '1') + "\", \"url\": \"u\"}";
    EXPECT_NE(decodeUpdateInfo(longVersion).error, QString());
}

} // namespace

} // namespace orv::test
