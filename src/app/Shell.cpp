#include "Shell.h"

#include "AudioCapture.h"
#include "AudioManager.h"
#include "BackendInstallerPath.h"
#include "BackendLog.h"
#include "ControlPanel.h"
#include "DesktopComposition.h"
#include "DesktopNotifications.h"
#include "L10n.h"
#include "NearRecognisers.h"
#include "OverlayServer.h"
#include "OverlayWindow.h"
#include "PanelWindow.h"
#include "PortProbe.h"
#include "Quit.h"
#include "RunRecovery.h"
#include "RunTexts.h"
#include "SettingsWindow.h"
#include "SpeechSynthesizer.h"
#include "SystemTray.h"
#include "ThreadChecks.h"
#include "ToolkitTexts.h"
#include "TranslationController.h"
#include "TranslationEngine.h"
#include "TranslationSettings.h"
#include "UpdateChecker.h"
#include "VRChatOutput.h"
#include "VmixSender.h"
#include "VmixTracking.h"
#include "WhisperModelManager.h"
#include "WhisperPackages.h"

#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

Shell::Shell(const UserPaths& paths, ProgramParts parts, std::function<void()> terminate)
    : paths_(paths)
    , parts_(std::move(parts))
    , terminate_(std::move(terminate))
    , store_(disk_, paths.defaultsFile()) {
    createSettings();
    createOutputs();
    addOutputs();
    createServices(paths);
    createInterface();
    connectObjects();
}

Shell::~Shell() = default;

void Shell::createSettings() {
    registerDefaultSettings(store_);
    overlayServer_ = std::make_unique<OverlayServer>();
    settings_ =
        std::make_unique<TranslationSettings>(store_, [this](const TranslationSettings& settings) {
            // The look comes first: the server may answer before this constructor is done.
            overlayServer_->setAppearance(OverlayAppearance::fromSettings(settings));
            overlayServer_->applySettings(OverlayServing::fromSettings(settings));
        });
    overlayServer_->setAppearance(OverlayAppearance::fromSettings(*settings_));
    watchOverlayAppearance(
        *settings_, settings_.get(),
        [this](const OverlayAppearance& appearance) { overlayServer_->setAppearance(appearance); });
    l10n_ = std::make_unique<L10n>(settings_->uiLanguage, systemLanguageCode());
    toolkitTexts_ = std::make_unique<ToolkitTexts>(*l10n_);
}

void Shell::createOutputs() {
    vrchat_ = std::make_unique<VRChatOutput>(*settings_);
    vmixTracking_ = std::make_unique<VmixTracking>(*settings_);
    speech_ = createSystemSpeechSynthesizer();
    overlayWindow_ = std::make_unique<OverlayWindow>(
        OverlayEnvironment{.speech = *speech_,
                           .isComposited = isDesktopComposited,
                           .choices = SubtitleChoices::fromSettings(*settings_)});
    watchSubtitleChoices(*settings_, overlayWindow_.get(), [this](const SubtitleChoices& choices) {
        overlayWindow_->setChoices(choices);
    });
}

void Shell::addOutputs() {
    results_.add(*overlayWindow_);
    results_.add(*overlayServer_);
    results_.add(*vrchat_);
    results_.add(std::make_unique<VmixSender>(*settings_, *vmixTracking_));
    for (Output* further : parts_.outputs) {
        results_.add(*further);
    }
}

void Shell::createServices(const UserPaths& paths) {
    const auto lookUp = [this](const QString& key) { return text(key); };
    capture_ = createSystemAudioCapture(disk_);
    portProbe_ = createSystemPortProbe();
    backendLog_ = std::make_unique<BackendLog>(
        disk_, BackendLogFile(paths.backendLog(), paths.earlierBackendLog()));
    engine_ = std::make_unique<TranslationEngine>(
        BackendEnvironment{.interpreter = paths.backendInterpreter(),
                           .script = paths.backendScript(),
                           .probe = *portProbe_,
                           .dialogs = dialogs_,
                           .text = lookUp,
                           .networkAccess = [this] { return settings_->networkAccess.get(); },
                           .mayOutlive = [this] { return !settings_->autoStopBackend.get(); },
                           .installer = backendInstaller(),
                           .home = paths.home,
                           .log = backendLog_.get()});
    quit_ = std::make_unique<Quit>(*engine_);
    audio_ =
        std::make_unique<AudioManager>(AudioEnvironment{.settings = *settings_,
                                                        .capture = *capture_,
                                                        .engines = parts_.engines,
                                                        .transcriptFolder = paths.outputFolder(),
                                                        .endpoints = parts_.addresses.speech});
    controller_ =
        std::make_unique<TranslationController>(ControllerEnvironment{.settings = *settings_,
                                                                      .capture = *audio_,
                                                                      .backend = *engine_,
                                                                      .dialogs = dialogs_,
                                                                      .text = lookUp,
                                                                      .quit = *quit_});
    recovery_ = std::make_unique<RunRecovery>(RecoveryEnvironment{
        .settings = *settings_, .audio = *audio_, .backend = *engine_, .controller = *controller_});
    const LocalSpeechEnvironment speech{.interpreter = paths.backendInterpreter(),
                                        .folder = QFileInfo(paths.backendScript()).path(),
                                        .installer = backendInstaller(),
                                        .home = paths.home,
                                        .whisperCache = paths.whisperCache(),
                                        .log = backendLog_.get()};
    packages_ = std::make_unique<WhisperPackages>(speech);
    recognisers_ = std::make_unique<NearRecognisers>(speech);
    models_ = std::make_unique<WhisperModelManager>(
        WhisperEnvironment{.programs = {.interpreter = paths.backendInterpreter(),
                                        .script = paths.modelScript(),
                                        .cacheFolder = paths.whisperCache()},
                           .files = modelFiles_,
                           .dialogs = dialogs_,
                           .text = lookUp,
                           .packages = packages_.get(),
                           .chosenModel = [this] { return settings_->whisperModel.get(); }});
}

void Shell::createInterface() {
    tray_ = std::make_unique<SystemTray>();
    userNotifications_ = std::make_unique<DesktopNotifications>();
    updates_ = std::make_unique<UpdateChecker>(
        UpdateEnvironment{.currentVersion = QStringLiteral(ORVANE_VERSION),
                          .updateURLs = parts_.addresses.updateManifests,
                          .opener = opener_});
    delegate_ = std::make_unique<AppDelegate>(
        DelegateEnvironment{.settings = *settings_,
                            .statusItem = *tray_,
                            .panel = window_,
                            .translationEngine = *engine_,
                            .quit = *quit_,
                            .updateChecker = *updates_,
                            .overlayServer = *overlayServer_,
                            .userNotifications = *userNotifications_,
                            .dialogs = dialogs_,
                            .opener = opener_,
                            .text = [this](const QString& key) { return text(key); },
                            .makeSettings = [this] { return makeSettings(); }});
}

std::unique_ptr<PanelWindow> Shell::makePanel() {
    ORV_ON_MAIN();
    panel_ = new ControlPanel({.settings = *settings_,
                               .engines = parts_.engines,
                               .audio = *audio_,
                               .engine = *engine_,
                               .controller = *controller_,
                               .recovery = *recovery_,
                               .l10n = *l10n_,
                               .vmix = *vmixTracking_});
    panel_->setHasTray(tray_->isAvailable());
    QObject::connect(panel_, &ControlPanel::settingsWanted, panel_, [this] {
        // Without a tray the panel's window is the way back in.
        if (tray_->isAvailable()) {
            window_.close();
        }
        delegate_->showSettingsWindow();
    });
    auto window = std::make_unique<PanelWindow>(
        panel_, [this] { return closeAction(tray_->isAvailable(), somethingRuns()); });
    QObject::connect(window.get(), &PanelWindow::endWanted, window.get(), terminate_);
    const auto showTitle = [this, panel = window.get()] {
        panel->setWindowTitle(text(u"app.name"_s));
    };
    showTitle();
    QObject::connect(l10n_.get(), &L10n::currentChanged, window.get(), showTitle);
    return window;
}

std::unique_ptr<QWidget> Shell::makeSettings() {
    ORV_ON_MAIN();
    return makeSettingsWindow({.disk = disk_,
                               .settings = *settings_,
                               .engines = parts_.engines,
                               .endpoints = parts_.addresses.speech,
                               .l10n = *l10n_,
                               .dialogs = dialogs_,
                               .chooser = chooser_,
                               .opener = opener_,
                               .updates = *updates_,
                               .models = *models_,
                               .packages = *packages_,
                               .recognisers = *recognisers_,
                               .paths = paths_,
                               .outputCards = outputCards([this] { vrchat_->sendVRChatTest(); })});
}

void Shell::connectObjects() {
    QObject::connect(audio_.get(), &AudioManager::resultArrived, &results_,
                     &ResultHub::ShowTranslation);
    QObject::connect(audio_.get(), &AudioManager::noticeRaised, audio_.get(),
                     [this](const AudioNotice& notice) {
                         window_.get();
                         panel_->showNotice(notice);
                     });
    QObject::connect(engine_.get(), &TranslationEngine::BackendStatusChanged, delegate_.get(),
                     &AppDelegate::backendStatusChanged);
    QObject::connect(controller_.get(), &TranslationController::TranslationStatusChanged,
                     delegate_.get(), &AppDelegate::translationStatusChanged);
    QObject::connect(delegate_.get(), &AppDelegate::trayCameOrWent, delegate_.get(),
                     [this](bool available) {
                         if (panel_ != nullptr) {
                             panel_->setHasTray(available);
                         }
                     });
    QObject::connect(quit_.get(), &Quit::terminationDue, quit_.get(), terminate_);
    connectSubtitles();
    connectInterruptions();
    QObject::connect(l10n_.get(), &L10n::currentChanged, engine_.get(),
                     &TranslationEngine::retranslate);
}

void Shell::connectSubtitles() {
    const auto showTitle = [this] { overlayWindow_->setWindowTitle(text(u"app.name"_s)); };
    showTitle();
    QObject::connect(l10n_.get(), &L10n::currentChanged, overlayWindow_.get(), showTitle);
    QObject::connect(controller_.get(), &TranslationController::subtitlesEnded,
                     overlayWindow_.get(), &OverlayWindow::endSubtitles);
    // Also at the start of a run, which assigns these settings.
    watchAll({&settings_->speakTranslation, &settings_->showOverlay}, overlayWindow_.get(), [this] {
        if (controller_->isTranslating()) {
            overlayWindow_->prepare();
        }
    });
    settings_->autoStopBackend.watch(engine_.get(),
                                     [this](bool /*stops*/) { engine_->refreshMayOutlive(); });
}

void Shell::connectInterruptions() {
    const auto lookUp = [this](const QString& key) { return text(key); };
    const auto show = [this, lookUp] {
        delegate_->showInterruption(recovery_->isInterrupted()
                                        ? troubleText(recovery_->interruption(), lookUp)
                                        : QString());
    };
    QObject::connect(recovery_.get(), &RunRecovery::changed, delegate_.get(), show);
    QObject::connect(l10n_.get(), &L10n::currentChanged, delegate_.get(), show);
    QObject::connect(recovery_.get(), &RunRecovery::interrupted, recovery_.get(), [this, lookUp] {
        userNotifications_->notify(text(u"run.interrupted"_s),
                                   troubleText(recovery_->interruption(), lookUp));
    });
}

void Shell::launch() {
    ORV_ON_MAIN();
    delegate_->applicationDidFinishLaunching();
}

bool Shell::showPanel() {
    ORV_ON_MAIN();
    return delegate_->showPanel();
}

void Shell::finish() {
    ORV_ON_MAIN();
    delegate_->applicationWillTerminate();
}

bool Shell::somethingRuns() const {
    return controller_->isTranslating() || controller_->isStopping() || engine_->isBusy() ||
           models_->isDownloading() || packages_->isAtWork();
}

QString Shell::text(const QString& key) const {
    ORV_ON_MAIN();
    return l10n_->platformText(key);
}

} // namespace orv
