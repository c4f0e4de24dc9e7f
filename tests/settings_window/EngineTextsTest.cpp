#include "EngineCatalogue.h"
#include "L10n.h"
#include "Symbols.h"

#include <gtest/gtest.h>

namespace orv::test {

namespace {

TEST(EngineTexts, haveATextForEveryKeyAndAPictureOfTheirOwn) {
    const StringTable& texts = L10n::strings().at(UILanguage::English);
    const auto isText = [&texts](const QString& key) { return texts.text(key).has_value(); };
    const EngineCatalogue catalogue;
    for (const EngineDescriptor& engine : catalogue.engines()) {
        EXPECT_TRUE(isText(engine.detailKey)) << qPrintable(engine.detailKey);
        EXPECT_TRUE(engine.nameKey.isEmpty() || isText(engine.nameKey));
        EXPECT_EQ(engine.hintKey.isEmpty(), engine.fields.empty());
        EXPECT_TRUE(engine.hintKey.isEmpty() || isText(engine.hintKey));
        EXPECT_FALSE(symbol(engine.icon).isNull()) << qPrintable(engine.icon);
        for (const EngineField& field : engine.fields) {
            EXPECT_TRUE(isText(field.labelKey)) << qPrintable(field.labelKey);
            EXPECT_TRUE(field.placeholderKey.isEmpty() || isText(field.placeholderKey));
            EXPECT_EQ(field.places.empty(), field.kind != EngineField::Kind::Place);
            EXPECT_NE(field.text != nullptr, field.number != nullptr);
        }
    }
}

} // namespace

} // namespace orv::test
