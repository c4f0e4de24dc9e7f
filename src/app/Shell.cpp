#include "Shell.h"

#include "AudioCapture.h"
#include "AudioManager.h"
#include "CloudEngines.h"
#include "ControlPanel.h"
#include "Controls.h"
#include "DesktopComposition.h"
#include "L10n.h"
#include "OverlayServer.h"
#include "OverlayWindow.h"
#include "PanelWindow.h"
#include "PortProbe.h"
#include "RegisteredDefaults.h"
#include "SpeechSynthesizer.h"
#include "SystemTray.h"
#include "TranslationController.h"
#include "TranslationEngine.h"
#include "TranslationSettings.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

Shell::Shell(const UserPaths& paths, ServiceAddresses addresses, std::function<void()> terminate)
    : addresses_(std::move(addresses))
    , terminate_(std::move(terminate))
    , store_(paths.defaultsFile()) {
    createSettings();
    createSubtitles();
    createServices(paths);
    createInterface();
    connectObjects();
}

Shell::~Shell() = default;

void Shell::createSettings() {
    registerDefaultValues(store_);
    l10n_ = std::make_unique<L10n>(store_, systemLanguageCode());
    overlayServer_ = std::make_unique<OverlayServer>(store_);
    settings_ =
        std::make_unique<TranslationSettings>(store_, [this] { overlayServer_->applySettings(); });
}

void Shell::createSubtitles() {
    speech_ = createSystemSpeechSynthesizer();
    overlayWindow_ = std::make_unique<OverlayWindow>(OverlayEnvironment{
        .store = store_, .speech = *speech_, .isComposited = isDesktopComposited});
}

void Shell::createServices(const UserPaths& paths) {
    const auto lookUp = [this](const QString& key) { return text(key); };
    capture_ = createSystemAudioCapture();
    portProbe_ = createSystemPortProbe();
    engine_ = std::make_unique<TranslationEngine>(BackendEnvironment{
        .interpreter = paths.backendInterpreter(),
        .script = paths.backendScript(),
        .probe = *portProbe_,
        .dialogs = dialogs_,
        .notifications = notifications_,
        .text = lookUp,
        .networkAccess = [this] { return settings_->networkAccess.get(); },
        .mayOutlive = [this] { return !store_.boolean(u"autoStopBackend"_s).value_or(true); }});
    backendControl_ = makeBackendControl(*engine_);
    audio_ = std::make_unique<AudioManager>(
        AudioEnvironment{.settings = *settings_,
                         .store = store_,
                         .capture = *capture_,
                         .notifications = notifications_,
                         .engineFactory = makeCloudEngine(addresses_.speech),
                         .sendToVmix = {},
                         .showNotice =
                             [this, lookUp](const AudioNotice& notice) {
                                 panel_->showNotice(noticeText(notice, lookUp));
                             },
                         .transcriptFolder = paths.outputFolder(),
                         .endpoints = addresses_.speech});
    captureControl_ = makeCaptureControl(*audio_);
    controller_ = std::make_unique<TranslationController>(
        ControllerEnvironment{.settings = *settings_,
                              .capture = *captureControl_,
                              .backend = *backendControl_,
                              .notifications = notifications_,
                              .dialogs = dialogs_,
                              .text = lookUp,
                              .endSubtitles = [this] { overlayWindow_->endSubtitles(); },
                              .terminate = terminate_});
}

void Shell::createInterface() {
    tray_ = std::make_unique<SystemTray>();
    panel_ = new ControlPanel({.settings = *settings_,
                               .audio = *audio_,
                               .engine = *engine_,
                               .controller = *controller_,
                               .l10n = *l10n_});
    window_ = std::make_unique<PanelWindow>(
        panel_, [this] { return closeAction(tray_->isAvailable(), somethingRuns()); }, terminate_);
    delegate_ = std::make_unique<AppDelegate>(
        DelegateEnvironment{.store = store_,
                            .notifications = notifications_,
                            .tray = *tray_,
                            .panel = *window_,
                            .backend = *backendControl_,
                            .text = [this](const QString& key) { return text(key); },
                            .applyOverlaySettings = [this] { overlayServer_->applySettings(); },
                            .stopOverlayServer = [this] { overlayServer_->stop(); },
                            .showSubtitles =
                                [this](const QString& original, const QString& translation) {
                                    overlayWindow_->showTranslation(original, translation);
                                },
                            .broadcast =
                                [this](const QString& original, const QString& translation) {
                                    overlayServer_->broadcast(original, translation);
                                },
                            .terminate = terminate_});
}

void Shell::connectObjects() {
    const auto showTitle = [this] {
        window_->setWindowTitle(text(u"app.name"_s));
        overlayWindow_->setWindowTitle(text(u"app.name"_s));
    };
    showTitle();
    QObject::connect(l10n_.get(), &L10n::currentChanged, window_.get(), showTitle);
    QObject::connect(l10n_.get(), &L10n::currentChanged, engine_.get(),
                     &TranslationEngine::retranslate);
    // Also at the start of a run, which assigns these settings.
    QObject::connect(settings_.get(), &TranslationSettings::changed, overlayWindow_.get(),
                     [this](const QString& key) {
                         const bool concerns =
                             key == "speakTranslation"_L1 || key == "showOverlay"_L1;
                         if (concerns && controller_->isTranslating()) {
                             overlayWindow_->prepare();
                         }
                     });
}

void Shell::launch() {
    delegate_->applicationDidFinishLaunching();
}

void Shell::finish() {
    delegate_->applicationWillTerminate();
}

bool Shell::somethingRuns() const {
    return controller_->isTranslating() || controller_->isStopping() || engine_->isRunning();
}

QString Shell::text(const QString& key) const {
    return l10n_->platformText(key);
}

} // namespace orv
