#include "FewFiles.h"
#include "PulseCaptureFixture.h"

#include <QDir>
#include <QFile>

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using orv::CaptureAuthorization;
using orv::MicrophoneFailure;
using orv::PulseAudioCapture;
using orv::RunningApp;
using orv::test::PulseCaptureFixture;
using orv::test::PulsePlayer;
using orv::test::toneSamples;
using orv::test::waitUntil;
using testing::IsEmpty;
using testing::SizeIs;

using PulseAudioCaptureTest = PulseCaptureFixture;

std::optional<CaptureAuthorization> authorization(orv::AudioCapture& capture) {
    std::optional<CaptureAuthorization> result;
    capture.microphoneAuthorization([&](CaptureAuthorization status) { result = status; });
    EXPECT_TRUE(waitUntil([&] { return result.has_value(); }));
    return result;
}

#if ORV_MAY_LACK_FILES

TEST(SystemAudioCapture, isWithoutSoundWhereTheSystemGivesNoDescriptors) {
    orv::SerialQueue disk(u"disk"_s);
    std::optional<orv::test::FewFiles> none(0);
    const auto capture = orv::createSystemAudioCapture(disk);
    none.reset();
    EXPECT_EQ(authorization(*capture), CaptureAuthorization::Denied);
    std::optional<QList<orv::AudioDevice>> devices;
    capture->listInputDevices([&](const QList<orv::AudioDevice>& found) { devices = found; });
    ASSERT_TRUE(waitUntil([&] { return devices.has_value(); }));
    EXPECT_THAT(*devices, IsEmpty());
}

#endif

TEST_F(PulseAudioCaptureTest, permissionIsThereWhenTheServerCanBeReached) {
    EXPECT_EQ(authorization(*capture), CaptureAuthorization::Authorized);
    std::optional<bool> granted;
    capture->requestMicrophoneAccess([&](bool is) { granted = is; });
    ASSERT_TRUE(waitUntil([&] { return granted.has_value(); }));
    EXPECT_TRUE(*granted);
}

TEST_F(PulseAudioCaptureTest, withoutAServerEverythingAnswersAndNothingIsThere) {
    options.server = "unix:" + QFile::encodeName(pulse.folder()) + "/nobody";
    capture = std::make_unique<PulseAudioCapture>(disk, orv::PulseConnection::create(options),
                                                  orv::RunningAppPlaces{});
    EXPECT_EQ(authorization(*capture), CaptureAuthorization::Denied);
    EXPECT_THAT(inputDevices(), IsEmpty());
    EXPECT_FALSE(capturableApps());
    const auto microphone = createMicrophone();
    EXPECT_EQ(prepare(*microphone, u"mic"_s).failure, MicrophoneFailure::NoEngine);
    const auto screen = createScreenCapture();
    EXPECT_FALSE(start(*screen).error.isEmpty());
}

TEST_F(PulseAudioCaptureTest, aServerThatComesLaterIsFound) {
    pulse.kill();
    capture = std::make_unique<PulseAudioCapture>(disk, orv::PulseConnection::create(options),
                                                  orv::RunningAppPlaces{});
    EXPECT_EQ(authorization(*capture), CaptureAuthorization::Denied);
    capture->setListener(this);
    pulse.start();
    ASSERT_TRUE(waitUntil([&] { return isToldAvailable(); }));
    EXPECT_EQ(authorization(*capture), CaptureAuthorization::Authorized);
    EXPECT_THAT(inputDevices(), SizeIs(2));
}

TEST_F(PulseAudioCaptureTest, aRestartIsToldAsAwayAndBack) {
    capture->setListener(this);
    ASSERT_TRUE(waitUntil([&] { return availability == QList<bool>{true}; }));
    pulse.kill();
    ASSERT_TRUE(waitUntil([&] { return availability == QList<bool>{true, false}; }));
    pulse.start();
    ASSERT_TRUE(waitUntil([&] { return availability == QList<bool>{true, false, true}; }));
}

TEST_F(PulseAudioCaptureTest, aDeviceThatComesOrGoesIsTold) {
    capture->setListener(this);
    ASSERT_THAT(inputDevices(), SizeIs(2));
    ASSERT_TRUE(waitUntil([&] { return listChanges > 0; }))
        << "the first connection is news as well";
    listChanges = 0;
    const QString module =
        pulse.load(u"module-remap-source source_name=usb master=speakers.monitor"_s);
    ASSERT_TRUE(waitUntil([&] { return listChanges > 0 && inputDevices().size() == 3; }));
    listChanges = 0;
    pulse.unload(module);
    ASSERT_TRUE(waitUntil([&] { return listChanges > 0 && inputDevices().size() == 2; }));
}

TEST_F(PulseAudioCaptureTest, anApplicationThatStartsOrStopsPlayingIsTold) {
    EXPECT_EQ(capturableApps(), QList<RunningApp>());
    capture->setListener(this);
    auto player = std::make_unique<PulsePlayer>(pulse, toneSamples(700), u"org.one"_s);
    const auto second = std::make_unique<PulsePlayer>(pulse, toneSamples(900), u"org.one"_s);
    ASSERT_TRUE(waitUntil([&] {
        return listChanges > 0 &&
               capturableApps() == QList<RunningApp>{{u"org.one"_s, u"org.one"_s}};
    })) << "once, however many streams it has";
    listChanges = 0;
    player.reset();
    EXPECT_TRUE(waitUntil([&] { return listChanges > 0; }));
}

TEST_F(PulseAudioCaptureTest, aRunningApplicationThatPlaysNothingCanBeChosen) {
    orv::RunningAppPlaces places;
    places.processes = pulse.folder() + u"/proc"_s;
    places.applications = {pulse.folder() + u"/applications"_s};
    ASSERT_TRUE(QDir().mkpath(places.processes + u"/1"_s));
    ASSERT_TRUE(QFile::link(u"/usr/bin/web"_s, places.processes + u"/1/exe"_s));
    ASSERT_TRUE(QDir().mkpath(places.applications.first()));
    QFile entry(places.applications.first() + u"/web.desktop"_s);
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Entry]\nType=Application\nName=Web\nExec=web\n");
    entry.close();
    capture =
        std::make_unique<PulseAudioCapture>(disk, orv::PulseConnection::create(options), places);
    EXPECT_EQ(capturableApps(), (QList<RunningApp>{{u"web"_s, u"Web"_s}}));

    const PulsePlayer other(pulse, toneSamples(700), u"org.one"_s);
    const auto stream = createScreenCapture();
    const orv::ScreenCaptureStart outcome =
        start(*stream, {.applicationId = u"web"_s, .waitForApplication = false});
    EXPECT_TRUE(outcome.applicationFound);
    EXPECT_EQ(outcome.applicationName, u"Web"_s);
    EXPECT_TRUE(hears({}, {700}));
}

TEST_F(PulseAudioCaptureTest, destroyingItWithQuestionsOpenCallsNobody) {
    const auto fail = [](const auto&) { FAIL() << "its owner is gone"; };
    capture->listInputDevices(fail);
    capture->listCapturableApps(fail);
    capture->listRunningApps(fail);
    capture->microphoneAuthorization(fail);
    const auto stream = createMicrophone();
    capture.reset();
    orv::test::drainEvents();
    EXPECT_EQ(prepare(*stream, u"mic"_s).failure, MicrophoneFailure::None)
        << "a stream outlives what made it";
}

} // namespace
