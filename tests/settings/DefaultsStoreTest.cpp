// Values, types and registration: what a reader of the store can rely on.

#include "StoreFixture.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <atomic>
#include <cmath>
#include <future>
#include <limits>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace orv::test {

using DefaultsStoreTest = StoreFixture;

TEST_F(DefaultsStoreTest, aMissingFileIsAnEmptyStoreAndSaysNothing) {
    const DefaultsStore& store = open();
    EXPECT_TRUE(store.object(u"sourceLang"_s).isUndefined());
    EXPECT_FALSE(store.contains(u"sourceLang"_s));
    EXPECT_FALSE(store.string(u"sourceLang"_s));
    EXPECT_FALSE(store.boolean(u"showOverlay"_s));
    EXPECT_FALSE(store.integer(u"vmixPort"_s));
    EXPECT_FALSE(store.floatValue(u"audioGain"_s));
    EXPECT_FALSE(store.doubleValue(u"overlayOpacity"_s));
    EXPECT_TRUE(log_.lines().isEmpty());
}

TEST_F(DefaultsStoreTest, everyTypeComesBackFromTheFile) {
    const QString text = u"Grüße 🎤\n\"Anführung\" \\ \t\u0001 中文"_s;
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
    DefaultsStore& store = open();
    store.setString(u"text"_s, text);
    store.setString(u"empty"_s, QString());
    store.setBool(u"yes"_s, true);
    store.setBool(u"no"_s, false);
    store.setInteger(u"port"_s, 8077);
    store.setInteger(u"largest"_s, largest);
    store.setInteger(u"smallest"_s, smallest);
    store.setFloat(u"gain"_s, 0.1F);
    store.setDouble(u"opacity"_s, 0.85);

    const DefaultsStore& again = open();
    EXPECT_EQ(again.string(u"text"_s), text);
    EXPECT_EQ(again.string(u"empty"_s), QString());
    EXPECT_EQ(again.boolean(u"yes"_s), true);
    EXPECT_EQ(again.boolean(u"no"_s), false);
    EXPECT_EQ(again.integer(u"port"_s), 8077);
    EXPECT_EQ(again.integer(u"largest"_s), largest);
    EXPECT_EQ(again.integer(u"smallest"_s), smallest);
    EXPECT_EQ(again.floatValue(u"gain"_s), 0.1F);
    EXPECT_EQ(again.doubleValue(u"opacity"_s), 0.85);
    EXPECT_TRUE(log_.lines().isEmpty());
}

TEST_F(DefaultsStoreTest, everyFloatComesBackBitForBit) {
    const std::vector<float> values = {0.1F,
                                       1.0F / 3.0F,
                                       16777217.0F,
                                       -0.7F,
                                       std::numeric_limits<float>::max(),
                                       std::numeric_limits<float>::min(),
                                       std::numeric_limits<float>::denorm_min(),
                                       std::nextafter(1.0F, 2.0F)};
    DefaultsStore& store = open();
    for (std::size_t i = 0; i < values.size(); ++i) {
        store.setFloat(QString::number(i), values[i]);
    }
    const DefaultsStore& again = open();
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(again.floatValue(QString::number(i)), values[i]);
    }
}

TEST_F(DefaultsStoreTest, aWholeNumberIsReadAsIntegerFloatAndDouble) {
    DefaultsStore& store = open();
    store.setDouble(u"whole"_s, 2.0);
    store.setInteger(u"integer"_s, 3);
    const DefaultsStore& again = open();
    EXPECT_EQ(again.integer(u"whole"_s), 2);
    EXPECT_EQ(again.doubleValue(u"whole"_s), 2.0);
    EXPECT_EQ(again.floatValue(u"integer"_s), 3.0F);
    EXPECT_EQ(again.doubleValue(u"integer"_s), 3.0);
    EXPECT_TRUE(log_.lines().isEmpty());
}

TEST_F(DefaultsStoreTest, aFractionIsNoInteger) {
    place(R"({"vmixPort": 8088.5, "huge": 1e300})");
    const DefaultsStore& store = open();
    EXPECT_FALSE(store.integer(u"vmixPort"_s));
    EXPECT_FALSE(store.integer(u"huge"_s));
    EXPECT_FALSE(store.floatValue(u"huge"_s));
    EXPECT_EQ(store.doubleValue(u"huge"_s), 1e300);
}

TEST_F(DefaultsStoreTest, infinitiesAndNotANumberAreRefusedAndTheEarlierValueStays) {
    DefaultsStore& store = open();
    store.setFloat(u"audioGain"_s, 1.5F);
    store.setFloat(u"audioGain"_s, std::numeric_limits<float>::infinity());
    store.setDouble(u"audioGain"_s, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(store.floatValue(u"audioGain"_s), 1.5F);
    EXPECT_EQ(
        log_.count(u"⚠️ Einstellung \"audioGain\": keine endliche Zahl, nicht gespeichert"_s),
        2);
}

TEST_F(DefaultsStoreTest, aWrittenValueIsReadAtOnce) {
    DefaultsStore& store = open();
    store.setString(u"targetLang"_s, u"fr"_s);
    EXPECT_EQ(store.string(u"targetLang"_s), u"fr"_s);
    store.setString(u"targetLang"_s, u"it"_s);
    EXPECT_EQ(store.string(u"targetLang"_s), u"it"_s);
}

TEST_F(DefaultsStoreTest, removingAKeyMakesItAbsentAlsoInTheFile) {
    DefaultsStore& store = open();
    store.setString(u"selectedInputDevice"_s, u"mic"_s);
    store.setBool(u"autoGain"_s, true);
    ASSERT_TRUE(store.waitUntilWritten());
    store.remove(u"selectedInputDevice"_s);
    EXPECT_FALSE(store.contains(u"selectedInputDevice"_s));
    ASSERT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(json().keys(), QStringList{u"autoGain"_s});
}

TEST_F(DefaultsStoreTest, aRegisteredValueAnswersUntilOneIsWrittenAndCountsAsPresent) {
    DefaultsStore& store = open();
    store.registerDefaults({{u"autoGain"_s, true}, {u"targetLang"_s, u"de"_s}});
    EXPECT_TRUE(store.contains(u"autoGain"_s));
    EXPECT_EQ(store.object(u"targetLang"_s), QJsonValue(u"de"_s));
    EXPECT_EQ(store.boolean(u"autoGain"_s), true);
    store.setBool(u"autoGain"_s, false);
    EXPECT_EQ(store.boolean(u"autoGain"_s), false);
    store.remove(u"autoGain"_s);
    EXPECT_EQ(store.boolean(u"autoGain"_s), true);
}

TEST_F(DefaultsStoreTest, registeredValuesNeverReachTheFile) {
    DefaultsStore& store = open();
    store.registerDefaults({{u"autoGain"_s, true}});
    store.setString(u"targetLang"_s, u"es"_s);
    ASSERT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(json().keys(), QStringList{u"targetLang"_s});
}

TEST_F(DefaultsStoreTest, keysTheProgramDoesNotKnowSurviveARewrite) {
    place(
        R"({"future": {"list": [1, "two", null, 2.5]}, "big": 9007199254740993, "nothing": null})");
    DefaultsStore& store = open();
    store.setBool(u"showOverlay"_s, false);
    ASSERT_TRUE(store.waitUntilWritten());
    const QJsonObject now = json();
    EXPECT_EQ(now.keys(), (QStringList{u"big"_s, u"future"_s, u"nothing"_s, u"showOverlay"_s}));
    EXPECT_EQ(now.value(u"future"_s).toObject().value(u"list"_s).toArray(),
              (QJsonArray{1, u"two"_s, QJsonValue::Null, 2.5}));
    EXPECT_EQ(now.value(u"big"_s).toInteger(), 9007199254740993);
    EXPECT_TRUE(now.value(u"nothing"_s).isNull());
}

TEST_F(DefaultsStoreTest, aValueOfTheWrongTypeGivesOneLineForEachKeyAndNoValue) {
    place(R"({"audioGain": "laut", "showOverlay": 1, "targetLang": 7, "vmixPort": [8088],
              "vmixHost": null, "sourceLang": "en"})");
    const DefaultsStore& store = open();
    for (int reads = 0; reads < 3; ++reads) {
        EXPECT_FALSE(store.floatValue(u"audioGain"_s));
        EXPECT_FALSE(store.boolean(u"showOverlay"_s));
        EXPECT_FALSE(store.string(u"targetLang"_s));
        EXPECT_FALSE(store.integer(u"vmixPort"_s));
        EXPECT_FALSE(store.string(u"vmixHost"_s));
    }
    EXPECT_EQ(store.string(u"sourceLang"_s), u"en"_s);
    EXPECT_EQ(
        log_.lines(),
        (QStringList{
            u"⚠️ Einstellung \"audioGain\" hat den falschen Typ (Text statt Zahl), Standardwert gilt"_s,
            u"⚠️ Einstellung \"showOverlay\" hat den falschen Typ (Zahl statt Wahrheitswert), "
            "Standardwert gilt"_s,
            u"⚠️ Einstellung \"targetLang\" hat den falschen Typ (Zahl statt Text), "
            u"Standardwert "
            "gilt"_s,
            u"⚠️ Einstellung \"vmixPort\" hat den falschen Typ (Liste statt Ganzzahl), "
            "Standardwert gilt"_s,
            u"⚠️ Einstellung \"vmixHost\" hat den falschen Typ (null statt Text), Standardwert "
            "gilt"_s,
        }));
}

TEST_F(DefaultsStoreTest, aValueOfTheWrongTypeLetsTheRegisteredOneAnswer) {
    place(R"({"autoGain": "ja"})");
    DefaultsStore& store = open();
    store.registerDefaults({{u"autoGain"_s, true}});
    EXPECT_EQ(store.boolean(u"autoGain"_s), true);
    EXPECT_EQ(store.object(u"autoGain"_s), QJsonValue(u"ja"_s));
}

TEST_F(DefaultsStoreTest, aValueOfTheWrongTypeStaysInTheFileUntilItIsReplaced) {
    place(R"({"audioGain": "laut"})");
    DefaultsStore& store = open();
    EXPECT_FALSE(store.floatValue(u"audioGain"_s));
    store.setBool(u"autoGain"_s, true);
    ASSERT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(json().value(u"audioGain"_s), QJsonValue(u"laut"_s));
    store.setFloat(u"audioGain"_s, 2.0F);
    EXPECT_EQ(store.floatValue(u"audioGain"_s), 2.0F);
}

TEST_F(DefaultsStoreTest, onlyChangesAreCounted) {
    place(R"({"targetLang": "de"})");
    DefaultsStore& store = open();
    EXPECT_EQ(store.generation(), 0U);
    store.setString(u"targetLang"_s, u"de"_s);
    store.remove(u"sourceLang"_s);
    EXPECT_EQ(store.generation(), 0U);
    store.setString(u"targetLang"_s, u"fr"_s);
    store.remove(u"targetLang"_s);
    EXPECT_EQ(store.generation(), 2U);
}

TEST_F(DefaultsStoreTest, nothingIsWrittenWithoutAChange) {
    place(R"({"targetLang":"de"})");
    DefaultsStore& store = open();
    store.setString(u"targetLang"_s, u"de"_s);
    EXPECT_TRUE(store.waitUntilWritten());
    close();
    EXPECT_EQ(content(), R"({"targetLang":"de"})");
}

TEST_F(DefaultsStoreTest, writesWhileTheDiskIsBusyReturnAtOnceAndShareOneReplacement) {
    DefaultsStore& store = open();
    std::atomic<int> replacements = 0;
    std::promise<void> busy;
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    store.setWrittenObserver([&, released](std::uint64_t) {
        if (++replacements == 1) {
            busy.set_value();
            released.wait();
        }
    });
    store.setInteger(u"value"_s, 0);
    busy.get_future().wait();
    // The store's thread is held up now; were a write or a read to wait for it, this would hang.
    for (int i = 1; i <= 1000; ++i) {
        store.setInteger(u"value"_s, i);
        ASSERT_EQ(store.integer(u"value"_s), i);
    }
    EXPECT_FALSE(store.waitUntilWritten(std::chrono::milliseconds(1)));
    release.set_value();
    EXPECT_TRUE(store.waitUntilWritten());
    EXPECT_EQ(json().value(u"value"_s).toInt(), 1000);
    close();
    EXPECT_EQ(replacements, 2);
}

TEST_F(DefaultsStoreTest, theObserverIsToldOnlyWhatIsInTheFile) {
    DefaultsStore& store = open();
    std::atomic<std::uint64_t> told = 0;
    std::atomic<int> lies = 0;
    store.setWrittenObserver([&](std::uint64_t generation) {
        const QJsonObject now = QJsonDocument::fromJson(readAll(file())).object();
        if (now.value(u"value"_s).toInteger() < static_cast<qint64>(generation)) {
            ++lies;
        }
        told = generation;
    });
    for (int i = 1; i <= 200; ++i) {
        store.setInteger(u"value"_s, i);
    }
    EXPECT_TRUE(store.waitUntilWritten());
    close();
    EXPECT_EQ(told, 200U);
    EXPECT_EQ(lies, 0);
}

TEST_F(DefaultsStoreTest, aWriteWaitsForTheJobUnderWayButForNoOther) {
    DefaultsStore& store = open();
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    std::promise<void> releaseSecond;
    const std::shared_future<void> secondReleased = releaseSecond.get_future().share();
    std::promise<bool> wasWritten;
    disk_.post([released] { released.wait(); });
    disk_.post([&, secondReleased] {
        wasWritten.set_value(QFile::exists(file()));
        secondReleased.wait();
    });
    store.setInteger(u"vmixPort"_s, 8088);
    release.set_value();
    EXPECT_TRUE(wasWritten.get_future().get());
    EXPECT_EQ(json().value(u"vmixPort"_s).toInt(), 8088);
    releaseSecond.set_value();
}

TEST_F(DefaultsStoreTest, closingWritesBeforeTheJobsThatWait) {
    DefaultsStore& store = open();
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    std::promise<void> begun;
    disk_.post([&begun, released] {
        begun.set_value();
        released.wait();
    });
    begun.get_future().wait();
    std::promise<void> releaseSecond;
    const std::shared_future<void> secondReleased = releaseSecond.get_future().share();
    disk_.post([secondReleased] { secondReleased.wait(); });
    store.setInteger(u"vmixPort"_s, 8088);
    release.set_value();
    close(); // Would hang if it waited for the second job.
    EXPECT_EQ(json().value(u"vmixPort"_s).toInt(), 8088);
    releaseSecond.set_value();
}

TEST_F(DefaultsStoreTest, aClosedStoreLeavesTheDiskAlone) {
    DefaultsStore& store = open({.retry = std::chrono::milliseconds(1)});
    {
        const FullDisk disk(0);
        store.setInteger(u"vmixPort"_s, 3);
        EXPECT_FALSE(store.waitUntilWritten());
        close();
    }
    // A retry that was due is on the queue before this, or its time comes while it runs.
    disk_.sync([] {});
    std::promise<void> later;
    disk_.postAfter(std::chrono::milliseconds(20), [&] { later.set_value(); });
    later.get_future().wait();
    EXPECT_FALSE(QFile::exists(file()));
}

TEST_F(DefaultsStoreTest, writersOnManyThreadsLoseNothing) {
    DefaultsStore& store = open();
    std::vector<std::thread> writers;
    writers.reserve(4);
    for (int writer = 0; writer < 4; ++writer) {
        writers.emplace_back([&store, writer] {
            for (int i = 0; i < 50; ++i) {
                const QString key = u"%1-%2"_s.arg(writer).arg(i);
                store.setInteger(key, i);
                EXPECT_EQ(store.integer(key), i);
            }
        });
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    close();
    EXPECT_EQ(json().size(), 200);
}

} // namespace orv::test
