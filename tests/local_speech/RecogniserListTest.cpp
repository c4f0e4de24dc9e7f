// What recognisers.py lists, as values.

#include "RecogniserList.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

TEST(RecogniserList, hasThoseThatAreNamedFirst) {
    const RecogniserList list = parseRecogniserList(
        R"({"state":"found","name":"B","kind":"sherpa","address":"ws://b","model":"",)"
        R"("answers":true})"
        "\nnoise\n"
        R"({"state":"named","name":"A","kind":"transcriptions","address":"http://a","model":"m",)"
        R"("languages":["de"],"answers":false,"text":"t","notice":{"code":"c","parameters":{}}})"
        "\n"
        R"({"state":"notice","text":"n","notice":{"code":"d","parameters":{"x":1}}})"
        "\n[]\n");
    ASSERT_EQ(list.recognisers.size(), 2);
    EXPECT_EQ(
        list.recognisers[0],
        (KnownRecogniser{
            .isNamed = true,
            .answers = false,
            .name = u"A"_s,
            .kind = u"transcriptions"_s,
            .address = u"http://a"_s,
            .model = u"m"_s,
            .why = {.status = {}, .message = u"t"_s, .version = {}, .notice = {.code = u"c"_s}}}));
    EXPECT_FALSE(list.recognisers[1].isNamed);
    ASSERT_EQ(list.notices.size(), 1);
    EXPECT_EQ(list.notices[0].message, u"n"_s);
    EXPECT_EQ(list.notices[0].notice.parameters.value(u"x"_s), u"1"_s);
}

TEST(RecogniserList, isEmptyWhereNothingIsListed) {
    EXPECT_EQ(parseRecogniserList({}), RecogniserList());
    EXPECT_EQ(parseRecogniserList("Traceback\n{\"state\":\"accepted\",\"name\":\"A\"}"),
              RecogniserList());
}

} // namespace

} // namespace orv
