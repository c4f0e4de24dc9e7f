#include "CloudEngines.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

TEST(CloudEngines, areMadeByTheirIdentifiers) {
    const CloudEngineFactory factory = makeCloudEngine();
    for (const auto& [id, name] : {std::pair{u"deepgram"_s, u"DeepgramDirectEngine"_s},
                                   std::pair{u"assemblyai"_s, u"AssemblyAIDirectEngine"_s},
                                   std::pair{u"azure"_s, u"AzureDirectEngine"_s},
                                   std::pair{u"google_rest"_s, u"GoogleCloudDirectEngine"_s}}) {
        const auto engine = factory(id);
        ASSERT_TRUE(engine) << id.toStdString();
        EXPECT_EQ(engine->id(), id);
        EXPECT_EQ(engine->name(), name);
    }
    EXPECT_FALSE(factory(u"google_grpc"_s));
    EXPECT_FALSE(factory(u"whisper"_s));
    EXPECT_FALSE(factory(QString()));
}

} // namespace
} // namespace orv
