// Whisper's packages and the recognisers near by, in the settings window. The speech server's
// programs and its installer are shell scripts.

#include "FieldCombo.h"
#include "SettingsWindowFixture.h"

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

QByteArray status(const QByteArray& faster, const QByteArray& models = {},
                  const QByteArray& used = "null") {
    return R"({"packages":[{"package":"faster-whisper","state":")" + faster +
           R"(","version":"1.2","why":null,"download_bytes":150000000,"disk_bytes":500000000},)"
           R"({"package":"openai-whisper","state":"missing","version":null,"why":null,)"
           R"("download_bytes":3000000000,"disk_bytes":7000000000}],"serves":)" +
           (faster == "there" ? R"("faster-whisper")" : "null") + R"(,"models":[)" + models +
           R"(],"used":)" + used + '}';
}

QByteArray model(const QByteArray& name, const QByteArray& state) {
    return R"({"model":")" + name + R"(","state":")" + state +
           R"(","package":"faster-whisper","can_fetch":true,"why":null})";
}

class LocalSpeechTabTest : public SettingsWindowFixture {
  protected:
    void show() {
        open();
        showTab(2);
    }

    /// The installer waits for the file "go", and then does what `then` says.
    void placeInstaller(const QByteArray& first, const QByteArray& then) const {
        const QByteArray folder = home.path().toUtf8();
        placeProgram(installer(), "echo \"$@\" >> '" + folder + "/installed'; " + first +
                                      "; while [ ! -e '" + folder + "/go' ]; do :; done; cd '" +
                                      folder + "'; " + then);
    }

    /// How many labels show exactly this.
    int countShown(const QString& wanted) const {
        const auto labels = window->findChildren<QLabel*>();
        return static_cast<int>(std::ranges::count_if(labels, [&](const QLabel* label) {
            return label->isVisible() && label->text() == wanted;
        }));
    }

    bool comesToShow(const QString& wanted) {
        return waitUntil([&] { return shows(wanted); });
    }
};

TEST_F(LocalSpeechTabTest, beforeThereIsAServerPackagesCanBeInstalled) {
    placeInstaller("echo '[5/7] x'; echo '==> 37 % of 9 MB'", "true");
    show();
    EXPECT_TRUE(shows(u"150\u00A0MB to download, 500\u00A0MB on the disk"_s));
    EXPECT_TRUE(isOffered(u"openai-whisper: Install"_s));
    press(u"faster-whisper: Install"_s);
    EXPECT_TRUE(comesToShow(u"Downloading: 37%"_s));
    EXPECT_FALSE(control(u"openai-whisper: Install"_s)->isEnabled()) << "one at a time";
    placeServer();
    placeText(u"status"_s, status("there"));
    placeText(u"list"_s, {});
    letDownloadsGo();
    EXPECT_TRUE(comesToShow(u"In use"_s));
    EXPECT_TRUE(isOffered(u"faster-whisper: Remove"_s));
    EXPECT_EQ(textOf(u"installed"_s), "--with faster-whisper\n");
}

TEST_F(LocalSpeechTabTest, aStepIsShownWhereNothingComes) {
    placeInstaller("echo '[6/7] x'", "true");
    show();
    press(u"faster-whisper: Install"_s);
    EXPECT_TRUE(comesToShow(u"Installing... 6/7"_s));
    letDownloadsGo();
    EXPECT_TRUE(isOffered(u"faster-whisper: Install"_s));
}

TEST_F(LocalSpeechTabTest, anInstallationCanBeBrokenOffAndGoesOnWhenAskedAgain) {
    placeInstaller("true", "true");
    show();
    press(u"faster-whisper: Install"_s);
    EXPECT_TRUE(waitUntil([this] { return !textOf(u"installed"_s).isEmpty(); }));
    press(u"faster-whisper: Cancel"_s);
    EXPECT_TRUE(isOffered(u"faster-whisper: Install"_s));
    EXPECT_FALSE(shows(u"Failed"_s)) << "nothing has failed";
    press(u"faster-whisper: Install"_s);
    letDownloadsGo();
    EXPECT_TRUE(waitUntil([this] { return textOf(u"installed"_s).count("--with") == 2; }));
    EXPECT_TRUE(isOffered(u"faster-whisper: Install"_s));
}

TEST_F(LocalSpeechTabTest, whyAnInstallationFailedStandsThere) {
    placeInstaller("true", "echo 'error: No space left on the disk'; exit 1");
    show();
    press(u"faster-whisper: Install"_s);
    letDownloadsGo();
    EXPECT_TRUE(comesToShow(u"No space left on the disk"_s));
    EXPECT_TRUE(shows(u"Failed"_s));
    EXPECT_TRUE(isOffered(u"faster-whisper: Install"_s));
}

TEST_F(LocalSpeechTabTest, anInstallationThatFailsWithoutAWordHasFailedAllTheSame) {
    placeInstaller("true", "exit 3");
    show();
    press(u"faster-whisper: Install"_s);
    letDownloadsGo();
    EXPECT_TRUE(comesToShow(u"Failed"_s));
}

TEST_F(LocalSpeechTabTest, aPackageIsRemoved) {
    placeServer();
    placeText(u"status"_s, status("there"));
    placeInstaller("true", "true");
    show();
    EXPECT_TRUE(isOffered(u"faster-whisper: Remove"_s));
    press(u"faster-whisper: Remove"_s);
    EXPECT_TRUE(comesToShow(u"Removing..."_s));
    placeText(u"status"_s, status("missing"));
    letDownloadsGo();
    EXPECT_TRUE(isOffered(u"faster-whisper: Install"_s));
    EXPECT_EQ(textOf(u"installed"_s), "--without faster-whisper\n");
}

TEST_F(LocalSpeechTabTest, noModelIsOfferedThatNothingCouldLoad) {
    placeServer();
    placeText(u"status"_s, status("missing", model("base", "missing")));
    show();
    const QString why = u"Models can be downloaded once Whisper is installed."_s;
    EXPECT_TRUE(comesToShow(why));
    EXPECT_FALSE(control(u"Base: Download"_s)->isEnabled());
    placeText(u"status"_s, status("there", model("base", "missing")));
    show();
    EXPECT_TRUE(isOffered(u"Base: Download"_s));
    EXPECT_FALSE(shows(why));
}

TEST_F(LocalSpeechTabTest, whatThePackageHasIsListedAndDeletedThere) {
    placeServer();
    placeText(u"status"_s,
              status("there", model("base", "there") + ',' + model("large-v2", "there") + ',' +
                                  model("tiny", "partial")));
    show();
    EXPECT_TRUE(isOffered(u"Base: Delete"_s));
    EXPECT_TRUE(isOffered(u"Large: Delete"_s));
    EXPECT_TRUE(isOffered(u"Tiny: Download"_s)) << "it goes on";
    placeText(u"status"_s, status("there", model("base", "missing")));
    press(u"Base: Delete"_s);
    EXPECT_TRUE(isOffered(u"Base: Download"_s));
    EXPECT_EQ(textOf(u"asked"_s), "delete base\n");
}

TEST_F(LocalSpeechTabTest, theModelThatServesIsMarkedAndWhyItIsNotTheChosenOne) {
    placeServer();
    const QByteArray both = model("tiny", "there") + ',' + model("base", "there");
    placeText(u"status"_s,
              status("there", both,
                     R"({"wanted":"small","model":"base","package":"faster-whisper","why":)"
                     R"({"code":"recognition.model_replaced","message":"x","parameters":)"
                     R"({"engine":"faster-whisper","model":"small","used":"base"}}})"));
    show();
    const QString why =
        u"faster-whisper recognizes with the smaller model “base” instead of “small”"_s;
    EXPECT_TRUE(comesToShow(why));
    EXPECT_EQ(countShown(u"In use"_s), 2) << "the package and Base";
    EXPECT_EQ(countShown(u"Downloaded"_s), 1) << "Tiny";
    placeText(u"status"_s,
              status("there", both, R"({"model":"tiny","package":"faster-whisper","why":null})"));
    settings.whisperModel.set(u"base"_s);
    Q_EMIT control<FieldCombo>(u"Current Model"_s)->chosen(u"tiny"_s);
    EXPECT_TRUE(waitUntil([&] { return !shows(why); }));
    EXPECT_EQ(settings.whisperModel.get(), u"tiny"_s);
}

TEST_F(LocalSpeechTabTest, whatIsNotWholeIsSaidToBeSoAndFetchedAgain) {
    placeServer();
    placeText(u"status"_s,
              status("there", model("tiny", "partial") + ',' + model("base", "unusable")));
    show();
    EXPECT_TRUE(comesToShow(u"Partly downloaded"_s));
    EXPECT_TRUE(shows(u"Damaged"_s));
    EXPECT_TRUE(isOffered(u"Tiny: Download"_s));
    EXPECT_TRUE(isOffered(u"Base: Download"_s));
}

TEST_F(LocalSpeechTabTest, whatIsInstalledElsewhereIsSeenWhenTheTabIsShownAgain) {
    show();
    EXPECT_TRUE(isOffered(u"faster-whisper: Install"_s));
    placeServer();
    placeText(u"status"_s, status("there"));
    showTab(0);
    showTab(2);
    EXPECT_TRUE(isOffered(u"faster-whisper: Remove"_s));
}

TEST_F(LocalSpeechTabTest, aRecogniserThatIsFoundServesOnlyWhenItIsChosen) {
    placeServer();
    placeText(u"list"_s, R"({"state":"found","name":"Speaches at 8000","kind":"transcriptions",)"
                         R"("address":"http://127.0.0.1:8000","model":"m/small","answers":true})");
    show();
    EXPECT_TRUE(comesToShow(u"http://127.0.0.1:8000 · m/small"_s));
    EXPECT_TRUE(isOffered(u"Speaches at 8000: Use"_s));
    EXPECT_EQ(textOf(u"asked"_s), QByteArray()) << "nobody has said yes";
    placeText(
        u"list"_s,
        R"({"state":"named","name":"Speaches","kind":"transcriptions","languages":[],)"
        R"("address":"http://127.0.0.1:8000","model":"m/small","answers":true,"notice":null})");
    press(u"Speaches at 8000: Use"_s);
    EXPECT_TRUE(comesToShow(u"Recognizes"_s));
    EXPECT_EQ(textOf(u"asked"_s), "accept transcriptions http://127.0.0.1:8000 m/small\n");
    placeText(u"list"_s, {});
    press(u"Speaches: Do Not Use"_s);
    EXPECT_TRUE(comesToShow(u"None is running."_s));
    EXPECT_TRUE(textOf(u"asked"_s).endsWith("forget Speaches\n"));
}

TEST_F(LocalSpeechTabTest, aNamedRecogniserThatIsSilentSaysWhy) {
    placeServer();
    placeText(u"list"_s,
              R"({"state":"named","name":"Kitchen","kind":"sherpa","languages":[],)"
              R"("address":"ws://127.0.0.1:6006","model":"","answers":false,"text":"x",)"
              R"("notice":{"code":"recognition.near_busy","parameters":{"engine":"Kitchen"}}})"
              "\nnoise\n"
              R"({"state":"notice","text":"y","notice":{"code":"settings.unknown",)"
              R"("parameters":{"file":"recognisers.toml","key":"a"}}})");
    show();
    EXPECT_TRUE(comesToShow(u"Does not answer"_s));
    EXPECT_TRUE(shows(u"ws://127.0.0.1:6006\nKitchen is busy"_s));
    EXPECT_TRUE(shows(u"recognisers.toml: “a” is unknown"_s));
    placeText(u"list"_s, {});
    press(u"Search Again"_s);
    EXPECT_TRUE(comesToShow(u"None is running."_s));
}

} // namespace

} // namespace orv::test
