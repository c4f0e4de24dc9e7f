#include "ControlPanel.h"

#include "AudioManager.h"
#include "BackendCard.h"
#include "BackendRow.h"
#include "BackendTexts.h"
#include "Buttons.h"
#include "InterruptionBanner.h"
#include "L10n.h"
#include "LanguageSection.h"
#include "NoticeCard.h"
#include "OptionsSection.h"
#include "PanelHeader.h"
#include "PanelPage.h"
#include "PanelState.h"
#include "ResultSection.h"
#include "RunRecovery.h"
#include "RunStages.h"
#include "SourceSection.h"
#include "Symbols.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "TranslationController.h"
#include "TranslationEngine.h"
#include "TranslationSettings.h"
#include "VMixWarningBanner.h"

#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

#include <chrono>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int panelWidth = 464;      ///< Logical pixels.
constexpr int mainButtonHeight = 40; ///< Logical pixels.
constexpr std::chrono::milliseconds oneFrame{16};

const QKeyCombination startStopKeys = Qt::CTRL | Qt::Key_Return;
const QKeyCombination startStopKeysOfNumberPad = Qt::CTRL | Qt::Key_Enter;

} // namespace

ControlPanel::ControlPanel(const PanelEnvironment& environment, QWidget* parent)
    : QWidget(parent)
    , environment_(environment)
    , header_(new PanelHeader(this)) {
    // Made in reading order, which is the order in which Tab leads through them.
    auto* page = new PanelPage(makeSections(), this);
    stages_ = new RunStages(environment_.audio, environment_.l10n, this);
    result_ = new ResultSection(this);
    startStop_ = makeButton(this, ButtonKind::Primary);
    noTray_ = makeHint(this);
    noTray_->hide();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, space::medium, 0, space::medium);
    layout->setSpacing(space::small);
    const auto addInset = [layout](QWidget* widget, int stretch) {
        auto* row = new QVBoxLayout;
        row->setContentsMargins(space::large, 0, space::large, 0);
        row->addWidget(widget);
        layout->addLayout(row, stretch);
    };
    addInset(header_, 0);
    // The page reaches the edges, so that its scroll bar stands beside the sections.
    layout->addWidget(page);
    addInset(stages_, 0);
    addInset(result_, 1);
    addInset(startStop_, 0);
    addInset(noTray_, 0);
    startStop_->setMinimumHeight(mainButtonHeight);
    setMinimumWidth(panelWidth);
    addKeys();
    connectState();
    translate();
}

QWidget* ControlPanel::makeSections() {
    TranslationSettings& settings = environment_.settings;
    AudioManager& audio = environment_.audio;
    L10n& l10n = environment_.l10n;
    auto* sections = new QWidget;
    auto* layout = new QVBoxLayout(sections);
    layout->setContentsMargins(space::large, 0, space::large, 0);
    layout->setSpacing(space::small);
    layout->addWidget(new VMixWarningBanner(environment_.vmix, l10n, sections));
    layout->addWidget(new InterruptionBanner(environment_.recovery, l10n, sections));
    notice_ = new NoticeCard(sections);
    layout->addWidget(notice_);
    backendCard_ = new BackendCard(audio, settings, l10n, sections);
    layout->addWidget(backendCard_);
    layout->addWidget(new BackendRow(environment_.engine, l10n, sections));
    layout->addWidget(new SourceSection(audio, settings, l10n, sections));
    layout->addWidget(new LanguageSection(settings, environment_.engines, l10n, sections));
    layout->addWidget(new OptionsSection(settings, l10n, sections));
    layout->addStretch(1);
    return sections;
}

void ControlPanel::addKeys() {
    for (const QKeyCombination keys : {startStopKeys, startStopKeysOfNumberPad}) {
        auto* shortcut = new QShortcut(keys, this);
        connect(shortcut, &QShortcut::activated, startStop_, &QPushButton::click);
    }
}

void ControlPanel::connectState() {
    AudioManager& audio = environment_.audio;
    connect(startStop_, &QPushButton::clicked, this, &ControlPanel::startOrStop);
    connect(header_, &PanelHeader::settingsWanted, this, &ControlPanel::settingsWanted);
    connect(header_, &PanelHeader::quitWanted, &environment_.controller,
            &TranslationController::quitApp);
    connect(&audio, &AudioManager::statusChanged, this, &ControlPanel::refreshRun);
    connect(&audio, &AudioManager::progressChanged, this, &ControlPanel::showStatus);
    connect(&environment_.recovery, &RunRecovery::changed, this, &ControlPanel::showStatus);
    resultDelay_.setSingleShot(true);
    resultDelay_.callOnTimeout(this, &ControlPanel::showResult);
    connect(&audio, &AudioManager::resultChanged, this, [this] {
        if (!resultDelay_.isActive()) {
            resultDelay_.start(oneFrame);
        }
    });
    showResult();
    connect(&environment_.controller, &TranslationController::stateChanged, this,
            &ControlPanel::refreshRun);
    connect(&environment_.engine, &TranslationEngine::isRunningChanged, this,
            &ControlPanel::refreshRun);
    connect(&environment_.l10n, &L10n::currentChanged, this, &ControlPanel::translate);
}

void ControlPanel::translate() {
    ORV_ON_MAIN();
    header_->translate([this](const QString& key) { return text(key); });
    noTray_->setText(text(u"panel.notray"_s));
    translateNotice();
    refreshRun();
}

void ControlPanel::refreshRun() {
    ORV_ON_MAIN();
    const TranslationController& controller = environment_.controller;
    const bool runs = controller.isTranslating();
    startStop_->setText(text(runs ? u"main.stop"_s : u"main.start"_s));
    startStop_->setIcon(symbol(runs ? u"stop.circle.fill"_s : u"play.circle.fill"_s));
    startStop_->setToolTip(
        text(u"main.start.tip"_s)
            .arg(QKeySequence(startStopKeys).toString(QKeySequence::NativeText)));
    setButtonKind(*startStop_, runs ? ButtonKind::Danger : ButtonKind::Primary);
    showStatus();
    result_->setEmptyText(resultHelp(environment_.engine.isRunning(),
                                     runs || controller.isStopping(),
                                     [this](const QString& key) { return text(key); }));
}

void ControlPanel::showResult() {
    result_->setResult(environment_.audio.currentOriginal(),
                       environment_.audio.currentTranslation());
}

void ControlPanel::showStatus() {
    ORV_ON_MAIN();
    const TranslationController& controller = environment_.controller;
    const AudioManager& audio = environment_.audio;
    const auto lookUp = [this](const QString& key) { return text(key); };
    const BackendNews& news = audio.backendNews();
    const StatusMessage* error = news.error();
    const bool isOfServer = error != nullptr && error->message == audio.progress().reason;
    const QString refusal = isOfServer ? backendText(*error, lookUp).summary : QString();
    const StatusLine status = statusLine({.isTranslating = controller.isTranslating(),
                                          .isStopping = controller.isStopping(),
                                          .backendStatus = backendText(news.latest, lookUp).summary,
                                          .refusal = refusal,
                                          .isModelLoading = audio.isModelLoading(),
                                          .hasEngineError = audio.hasEngineError(),
                                          .progress = audio.progress()},
                                         lookUp);
    header_->setStatus(status);
    // What a card says is said large enough.
    const bool isInCard =
        environment_.recovery.isInterrupted() || backendCard_->says(status.headline);
    result_->setStatus(isInCard ? StatusLine() : status);
}

void ControlPanel::startOrStop() {
    ORV_ON_MAIN();
    if (environment_.controller.isTranslating()) {
        environment_.controller.stopTranslation();
    } else {
        environment_.controller.startTranslation();
    }
}

void ControlPanel::setHasTray(bool hasTray) {
    ORV_ON_MAIN();
    noTray_->setVisible(!hasTray);
}

void ControlPanel::showNotice(const AudioNotice& notice) {
    ORV_ON_MAIN();
    latestNotice_ = notice;
    translateNotice();
    notice_->show();
}

void ControlPanel::translateNotice() {
    if (latestNotice_) {
        const auto lookUp = [this](const QString& key) { return text(key); };
        notice_->setTexts(noticeText(*latestNotice_, lookUp), text(u"alert.ok"_s));
    }
}

QString ControlPanel::text(const QString& key) const {
    return environment_.l10n.platformText(key);
}

} // namespace orv
