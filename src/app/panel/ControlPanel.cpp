#include "ControlPanel.h"

#include "AudioManager.h"
#include "BackendRow.h"
#include "L10n.h"
#include "LanguageSection.h"
#include "OptionsSection.h"
#include "PanelState.h"
#include "Pieces.h"
#include "ResultSection.h"
#include "SourceSection.h"
#include "Symbols.h"
#include "Theme.h"
#include "TranslationController.h"
#include "TranslationSettings.h"
#include "VMixWarningBanner.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int panelWidth = 440;
constexpr int panelMargin = 16;

QFrame* makeSeparator(QWidget* parent) {
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

} // namespace

ControlPanel::ControlPanel(PanelEnvironment environment, QWidget* parent)
    : QWidget(parent)
    , environment_(std::move(environment))
    , result_(new ResultSection(this)) {
    TranslationSettings& settings = environment_.settings;
    AudioManager& audio = environment_.audio;
    L10n& l10n = environment_.l10n;
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(panelMargin, panelMargin, panelMargin, panelMargin);
    layout->setSpacing(panelMargin * 3 / 4);
    layout->addWidget(makeHeader());
    layout->addWidget(new VMixWarningBanner(settings, environment_.vmix, l10n, this));
    layout->addWidget(new BackendRow(environment_.engine, l10n, this));
    layout->addWidget(makeSeparator(this));
    layout->addWidget(new SourceSection(audio, settings, l10n, this));
    layout->addWidget(new LanguageSection(settings, l10n, this));
    layout->addWidget(new OptionsSection(audio, settings, l10n, this));
    layout->addWidget(makeSeparator(this));
    layout->addWidget(result_, 1);
    layout->addWidget(makeFooter());
    setMinimumWidth(panelWidth);
    connectState();
    translate();
}

QWidget* ControlPanel::makeHeader() {
    auto* header = new QWidget(this);
    title_ = makeHeading(header);
    QFont font = title_->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    title_->setFont(font);
    subtitle_ = makeHint(header);
    auto* layout = new QVBoxLayout(header);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(title_);
    layout->addWidget(subtitle_);
    return header;
}

QWidget* ControlPanel::makeFooter() {
    auto* footer = new QWidget(this);
    startStop_ = makeButton(footer);
    settings_ = makeButton(footer);
    quit_ = makeButton(footer);
    for (QPushButton* button : {startStop_, settings_, quit_}) {
        button->setFixedHeight(button->sizeHint().height() * 5 / 4);
    }
    auto* row = new QHBoxLayout(footer);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::small);
    row->addWidget(startStop_, 1);
    row->addWidget(settings_);
    row->addWidget(quit_);
    connect(startStop_, &QPushButton::clicked, this, &ControlPanel::startOrStop);
    connect(settings_, &QPushButton::clicked, this, [this] {
        if (environment_.showSettings) {
            environment_.showSettings();
        }
    });
    connect(quit_, &QPushButton::clicked, &environment_.controller,
            &TranslationController::quitApp);
    return footer;
}

void ControlPanel::connectState() {
    AudioManager& audio = environment_.audio;
    connect(&audio, &AudioManager::statusChanged, this, &ControlPanel::refreshRun);
    connect(&audio, &AudioManager::resultChanged, this, [this] {
        result_->setResult(environment_.audio.currentOriginal(),
                           environment_.audio.currentTranslation());
    });
    connect(&environment_.controller, &TranslationController::stateChanged, this,
            &ControlPanel::refreshRun);
    connect(&environment_.l10n, &L10n::currentChanged, this, &ControlPanel::translate);
}

void ControlPanel::translate() {
    title_->setText(environment_.l10n.platformText(u"app.name.short"_s));
    subtitle_->setText(environment_.l10n.platformText(u"app.subtitle"_s));
    settings_->setText(environment_.l10n.platformText(u"main.settings"_s));
    quit_->setText(environment_.l10n.platformText(u"main.quit"_s));
    refreshRun();
}

void ControlPanel::refreshRun() {
    const TranslationController& controller = environment_.controller;
    const AudioManager& audio = environment_.audio;
    const QString key = controller.isTranslating() ? u"main.stop"_s : u"main.start"_s;
    startStop_->setText(environment_.l10n.platformText(key));
    startStop_->setIcon(
        symbol(controller.isTranslating() ? u"stop.circle.fill"_s : u"play.circle.fill"_s));
    result_->setStatus(
        statusLine({.isTranslating = controller.isTranslating(),
                    .isStopping = controller.isStopping(),
                    .backendStatus = audio.backendStatus(),
                    .isModelLoading = audio.isModelLoading(),
                    .hasEngineError = audio.hasEngineError()},
                   [this](const QString& text) { return environment_.l10n.platformText(text); }));
}

void ControlPanel::startOrStop() {
    if (environment_.controller.isTranslating()) {
        environment_.controller.stopTranslation();
    } else {
        environment_.controller.startTranslation();
    }
}

void ControlPanel::showNotice(const QString& text) {
    result_->showNotice(text, environment_.l10n.platformText(u"alert.ok"_s));
}

} // namespace orv
