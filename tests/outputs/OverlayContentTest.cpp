#include "OverlayContent.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace orv {

using namespace Qt::StringLiterals;

TEST(OverlayContent, leadsToTheDocumentAndThePage) {
    EXPECT_EQ(overlayRoute("/text"), OverlayRoute::Text);
    EXPECT_EQ(overlayRoute("/"), OverlayRoute::Page);
    EXPECT_EQ(overlayRoute("/overlay"), OverlayRoute::Page);
}

TEST(OverlayContent, ignoresTheQuery) {
    EXPECT_EQ(overlayRoute("/text?x=1"), OverlayRoute::Text);
    EXPECT_EQ(overlayRoute("/overlay?a?b"), OverlayRoute::Page);
    EXPECT_EQ(overlayRoute("/?"), OverlayRoute::Page);
}

TEST(OverlayContent, findsNothingElse) {
    for (const char* path : {"/favicon.ico", "/text/", "/TEXT", "/overlay/", "text", "?", "//"}) {
        EXPECT_EQ(overlayRoute(path), OverlayRoute::NotFound) << path;
    }
    EXPECT_EQ(notFoundResponse().body, "Not Found");
    EXPECT_EQ(notFoundResponse().contentType, "text/plain; charset=utf-8");
}

TEST(OverlayContent, encodesAResultWithItsMembersAndTheLook) {
    const OverlayResult result{
        u"Grüße \"\n</script>"_s, u"日本語 🎧"_s, 1700000000.123,
        OverlayAppearance{QColor(1, 2, 3), 0.5, u"#FFFFFF"_s, std::nullopt, true}};
    const QJsonObject expected{{u"original"_s, result.original},
                               {u"translation"_s, result.translation},
                               {u"ts"_s, 1700000000.123},
                               {u"showOriginal"_s, true},
                               {u"style"_s, QJsonObject{{u"background"_s, u"rgba(1,2,3,0.5)"_s},
                                                        {u"border"_s, QString()},
                                                        {u"color"_s, u"#FFFFFF"_s}}}};
    EXPECT_EQ(QJsonDocument::fromJson(result.toJson()).object(), expected);
}

TEST(OverlayContent, tellsResultsOfTheSameMillisecondApart) {
    const auto moment = [](double seconds) {
        return QJsonDocument::fromJson(OverlayResult{{}, {}, seconds, {}}.toJson())
            .object()
            .value(u"ts"_s)
            .toDouble();
    };
    EXPECT_EQ(moment(1700000000.000001), 1700000000.000001);
    EXPECT_NE(moment(1700000000.000001), moment(1700000000.000002));
}

TEST(OverlayContent, staysJsonWithHalfACharacter) {
    const OverlayResult result{QString(QChar(0xD83D)), u"x"_s, 1, {}};
    EXPECT_EQ(QJsonDocument::fromJson(result.toJson()).object().value(u"translation"_s), u"x"_s);
}

} // namespace orv
