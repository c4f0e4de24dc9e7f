// What manage_whisper.py tells, as values.

#include "WhisperInventory.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const QByteArray told =
    R"({"packages":[{"package":"faster-whisper","module":"faster_whisper","state":"there",)"
    R"("version":"1.2.1","why":null,"download_bytes":150000000,"disk_bytes":500000000},)"
    R"({"package":"openai-whisper","state":"unusable","version":null,"why":{"code":)"
    R"("recognition.not_loaded","parameters":{"engine":"W","reason":"r"},"message":"m"},)"
    R"("download_bytes":3000000000,"disk_bytes":-1}],"serves":"faster-whisper","models":[)"
    R"({"model":"tiny","state":"partial","package":"faster-whisper","can_fetch":true,"why":null},)"
    R"({"model":"large-v2","state":"there","package":"faster-whisper","can_fetch":false,)"
    R"("why":null},{"model":"large-v3","state":"missing","package":null,"can_fetch":true,)"
    R"("why":null}],"used":{"wanted":"base","model":"tiny","package":"faster-whisper",)"
    R"("why":{"code":"recognition.model_replaced","parameters":{"n":3},"message":"k"}}})";

TEST(WhisperInventory, isWhatTheServerTells) {
    const auto inventory = parseWhisperInventory(told);
    ASSERT_TRUE(inventory);
    ASSERT_EQ(inventory->packages.size(), 2);
    EXPECT_EQ(inventory->packages[0], (WhisperPackage{.name = u"faster-whisper"_s,
                                                      .presence = Presence::There,
                                                      .version = u"1.2.1"_s,
                                                      .downloadBytes = 150'000'000,
                                                      .diskBytes = 500'000'000}));
    const WhisperPackage& other = inventory->packages[1];
    EXPECT_EQ(other.presence, Presence::Unusable);
    EXPECT_EQ(other.downloadBytes, 3'000'000'000) << "more than 32 bits hold";
    EXPECT_EQ(other.diskBytes, 0);
    EXPECT_EQ(other.why.message, u"m"_s);
    EXPECT_EQ(other.why.notice, (BackendNotice{u"recognition.not_loaded"_s,
                                               {{u"engine"_s, u"W"_s}, {u"reason"_s, u"r"_s}}}));
    EXPECT_EQ(inventory->serves, u"faster-whisper"_s);
    EXPECT_EQ(inventory->usedModel, u"tiny"_s);
    EXPECT_EQ(inventory->whyOther.notice.parameters.value(u"n"_s), u"3"_s);
    EXPECT_EQ(copyOf(*inventory, u"tiny"_s).presence, Presence::Partial);
    EXPECT_TRUE(copyOf(*inventory, u"tiny"_s).canBeFetched);
    EXPECT_EQ(copyOf(*inventory, u"base"_s), WhisperCopy());
}

TEST(WhisperInventory, ofLargeCountsTheNewestThatIsThere) {
    auto inventory = parseWhisperInventory(told).value_or(WhisperInventory());
    EXPECT_EQ(copyOf(inventory, u"large"_s).presence, Presence::There);
    inventory.models[u"large-v2"_s].presence = Presence::Missing;
    EXPECT_EQ(copyOf(inventory, u"large"_s), inventory.models[u"large-v3"_s]);
}

TEST(WhisperInventory, saysWhichOfTheModelsServes) {
    auto inventory = parseWhisperInventory(told).value_or(WhisperInventory());
    EXPECT_TRUE(uses(inventory, u"tiny"_s));
    EXPECT_FALSE(uses(inventory, u"base"_s)) << "it is only chosen";
    inventory.usedModel = u"large-v2"_s;
    EXPECT_TRUE(uses(inventory, u"large"_s));
    inventory.usedModel.clear();
    EXPECT_FALSE(uses(inventory, {})) << "none serves";
}

TEST(WhisperInventory, isTheLastObjectAmongWhatPackagesPrint) {
    EXPECT_EQ(parseWhisperInventory("a warning\n{\"x\":1}\n" + told + "\nand another\n"),
              parseWhisperInventory(told));
    for (const QByteArray& nothing : {QByteArray(), QByteArray("{}"), QByteArray("[1]\n"),
                                      QByteArray("{\"packages\":3}"), QByteArray("\xff\x00x", 3)}) {
        EXPECT_FALSE(parseWhisperInventory(nothing)) << nothing.constData();
    }
}

TEST(WhisperInventory, ofNothingOffersBothPackages) {
    const WhisperInventory none = nothingOfWhisper();
    ASSERT_EQ(none.packages.size(), 2);
    EXPECT_EQ(none.packages[0].name, u"faster-whisper"_s);
    for (const WhisperPackage& package : none.packages) {
        EXPECT_EQ(package.presence, Presence::Missing);
        EXPECT_GT(package.downloadBytes, 0);
    }
    EXPECT_EQ(none.serves, QString());
}

} // namespace

} // namespace orv
