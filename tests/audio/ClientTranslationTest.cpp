// Texts that the backend only recognised, in front of a translation service in a process of its
// own.

#include "ClientTranslation.h"
#include "AudioManagerFixture.h"
#include "ServicePeer.h"
#include "TranslationMessages.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

using test::drainEvents;
using test::ServicePeer;
using test::waitUntil;

/// A service that answers when it is told to, whichever question came first.
class TranslationService : public ServicePeer {
  public:
    TranslationService()
        : ServicePeer(u"http_service.py"_s) {}

    ServiceEndpoints endpoints() const { return {{translationHost, url(u"http"_s)}}; }

    void answer(const QString& text, const QString& translation) {
        command({{u"answer"_s, id(text)},
                 {u"body"_s,
                  uR"({"data":{"translations":[{"translatedText":"%1"}]}})"_s.arg(translation)}});
    }

    /// Waits until it was asked for this text.
    void waitFor(const QString& text) {
        EXPECT_TRUE(waitUntil([&] { return id(text) >= 0; })) << qPrintable(text);
    }

  private:
    int id(const QString& text) {
        for (const QJsonObject& request : events(u"request"_s)) {
            const QByteArray body = QByteArray::fromBase64(request[u"body"_s].toString().toUtf8());
            if (QJsonDocument::fromJson(body)[u"q"_s].toString() == text) {
                return request[u"id"_s].toInt();
            }
        }
        return -1;
    }
};

class ClientTranslationTest : public testing::Test {
  protected:
    ClientTranslationTest() {
        makeTranslation([this](const Result& result) { results.append(result); });
    }

    template <typename Take>
    void makeTranslation(Take take) {
        translation = std::make_unique<ClientTranslation>(service.endpoints());
        QObject::connect(translation.get(), &ClientTranslation::translated, translation.get(),
                         std::move(take));
    }

    void ask(const QString& text) { translation->translate(text, u"es"_s, u"KEY"_s); }

    TranslationService service;
    QList<Result> results;
    std::unique_ptr<ClientTranslation> translation;
};

TEST_F(ClientTranslationTest, answersKeepTheOrderOfTheTexts) {
    ask(u"one"_s);
    ask(u"two"_s);
    service.waitFor(u"one"_s);
    service.waitFor(u"two"_s);
    service.answer(u"two"_s, u"dos"_s);
    ASSERT_TRUE(waitUntil([this] { return service.count(u"request"_s) == 2; }));
    EXPECT_TRUE(results.isEmpty());
    service.answer(u"one"_s, u"uno"_s);
    ASSERT_TRUE(waitUntil([this] { return results.size() == 2; }));
    EXPECT_EQ(results, (QList<Result>{{u"one"_s, u"uno"_s}, {u"two"_s, u"dos"_s}}));
}

TEST_F(ClientTranslationTest, aTextThatCannotBeAskedForLeavesUntranslatedAndLater) {
    translation->translate(u"one"_s, u"es"_s, u"no key <>"_s);
    EXPECT_TRUE(results.isEmpty());
    ASSERT_TRUE(waitUntil([this] { return results.size() == 1; }));
    EXPECT_EQ(results[0], (Result{u"one"_s, {}}));
}

TEST_F(ClientTranslationTest, endsWithItsRun) {
    ask(u"one"_s);
    service.waitFor(u"one"_s);
    translation.reset();
    service.answer(u"one"_s, u"uno"_s);
    makeTranslation([this](const Result& result) { results.append(result); });
    ask(u"two"_s);
    service.waitFor(u"two"_s);
    service.answer(u"two"_s, u"dos"_s);
    ASSERT_TRUE(waitUntil([this] { return !results.isEmpty(); }));
    EXPECT_EQ(results, (QList<Result>{{u"two"_s, u"dos"_s}}));
}

TEST_F(ClientTranslationTest, mayBeEndedByWhoeverGetsAResult) {
    makeTranslation([this, kept = QByteArray(64, 'x')](const Result& result) {
        const QString original = result.original;
        translation.reset();
        results.append({original, QString::fromLatin1(kept.left(1))});
    });
    ask(u"one"_s);
    ask(u"two"_s);
    service.waitFor(u"one"_s);
    service.waitFor(u"two"_s);
    service.answer(u"two"_s, u"dos"_s);
    service.answer(u"one"_s, u"uno"_s);
    ASSERT_TRUE(waitUntil([this] { return !results.isEmpty(); }));
    drainEvents();
    EXPECT_EQ(results, (QList<Result>{{u"one"_s, u"x"_s}}));
}

/// Whole runs with Google's streaming recognition.
class ClientTranslationRun : public test::AudioManagerFixture {
  protected:
    void SetUp() override {
        settings.sttEngine.set(u"google_grpc"_s);
        settings.googleServiceAccountPath.set(u"/account.json"_s);
        settings.googleApiKey.set(u"KEY"_s);
        endpoints = service.endpoints();
        startRun();
    }

    void recognise(const QString& text) {
        backend.send(
            uR"({"type":"translation","original":"%1","translation":""})"_s.arg(text).toUtf8());
        service.waitFor(text);
    }

    void stopAtOnceAndStartAgain() {
        manager->stopCaptureSync();
        const auto configurations = backend.messages(u"config"_s).size();
        manager->sendConfig(u"en"_s, u"es"_s, false, false);
        manager->startCapture(AudioSourceType::Microphone, {}, {});
        ASSERT_TRUE(
            waitUntil([&] { return backend.messages(u"config"_s).size() == configurations + 1; }));
    }

    TranslationService service;
};

TEST_F(ClientTranslationRun, bringsItsResultsInTheirOrder) {
    recognise(u"one"_s);
    recognise(u"two"_s);
    service.answer(u"two"_s, u"dos"_s);
    service.answer(u"one"_s, u"uno"_s);
    ASSERT_TRUE(waitUntil([this] { return fannedOut.size() == 4; }));
    EXPECT_TRUE(fannedOut[0].endsWith(u"one|uno"_s));
    EXPECT_TRUE(fannedOut[2].endsWith(u"two|dos"_s));
}

TEST_F(ClientTranslationRun, saysWhyThereIsNoTranslationUntilThereIsOne) {
    recognise(u"one"_s);
    service.command({{u"answer"_s, 0},
                     {u"status"_s, 403},
                     {u"body"_s, uR"({"error":{"code":403,"message":"Daily Limit Exceeded"}})"_s}});
    ASSERT_TRUE(waitUntil([this] { return fannedOut.size() == 2; }));
    ASSERT_EQ(manager->backendNews().disturbances.size(), 1);
    const BackendNotice& notice = manager->backendNews().disturbances.first().notice;
    EXPECT_EQ(notice.code, u"service.quota"_s);
    EXPECT_EQ(notice.parameters.value(u"engine"_s), u"Google Translate"_s);
    recognise(u"two"_s);
    service.answer(u"two"_s, u"dos"_s);
    ASSERT_TRUE(waitUntil([this] { return fannedOut.size() == 4; }));
    EXPECT_TRUE(manager->backendNews().disturbances.isEmpty());
}

TEST_F(ClientTranslationRun, bringsTheLastWordsAfterItsStop) {
    recognise(u"last"_s);
    manager->stopCapture({});
    service.answer(u"last"_s, u"último"_s);
    stopAndWait();
    ASSERT_FALSE(fannedOut.isEmpty());
    EXPECT_TRUE(fannedOut[0].endsWith(u"last|último"_s));
}

TEST_F(ClientTranslationRun, bringsNothingIntoTheNextRun) {
    recognise(u"late"_s);
    stopAtOnceAndStartAgain();
    service.answer(u"late"_s, u"tarde"_s);
    recognise(u"new"_s);
    service.answer(u"new"_s, u"nuevo"_s);
    ASSERT_TRUE(waitUntil([this] { return !fannedOut.isEmpty(); }));
    EXPECT_TRUE(fannedOut[0].endsWith(u"new|nuevo"_s)) << qPrintable(fannedOut[0]);
}

} // namespace
} // namespace orv
