#pragma once

#include "StoreFixture.h"
#include "TranslationSettings.h"

#include <memory>

namespace orv::test {

/// Settings over a store of their own.
class SettingsFixture : public StoreFixture {
  protected:
    /// Settings over a file with `content`, as at a start of the program but for the registration.
    TranslationSettings& load(const QByteArray& content) {
        settings_.reset();
        place(content);
        return reload();
    }

    /// Closes the store and starts anew.
    TranslationSettings& reload() {
        settings_.reset();
        settings_ = std::make_unique<TranslationSettings>(
            open(), [this](const TranslationSettings&) { ++applied_; });
        return *settings_;
    }

    /// The stored value of a key, once all is written.
    QJsonValue stored(const QString& key) {
        EXPECT_TRUE(store_->waitUntilWritten());
        return json().value(key);
    }

    int applied_ = 0; ///< How often the overlay server was told of its settings.
    std::unique_ptr<TranslationSettings> settings_;
};

} // namespace orv::test
