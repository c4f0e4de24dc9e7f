#include "SourceSection.h"

#include "AudioManager.h"
#include "FieldCombo.h"
#include "L10n.h"
#include "LevelBar.h"
#include "PanelState.h"
#include "QuantityTexts.h"
#include "SegmentedControl.h"
#include "SliderField.h"
#include "SwitchRow.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "ToneLabel.h"
#include "TranslationSettings.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

// The gain's range, in percent: the same as what it follows by itself can reach.
constexpr int lowestGain = 50;
constexpr int highestGain = 300;
constexpr int gainStep = 10;

int idOf(AudioSourceType source) {
    return static_cast<int>(source);
}

/// Complete at once: Tab leads through controls in the order in which they are made.
SegmentedControl* makeSources(QWidget* parent) {
    auto* sources = new SegmentedControl(parent);
    for (const AudioSourceType source :
         {AudioSourceType::Microphone, AudioSourceType::SystemAudio, AudioSourceType::SingleApp}) {
        sources->addSegment(idOf(source));
    }
    return sources;
}

} // namespace

SourceSection::SourceSection(AudioManager& audio, TranslationSettings& settings, L10n& l10n,
                             QWidget* parent)
    : Card(parent)
    , audio_(audio)
    , settings_(settings)
    , l10n_(l10n)
    , heading_(addHeading())
    , sources_(makeSources(this))
    , devices_(new FieldCombo(FieldCombo::Search::None, this))
    , refreshDevices_(new IconButton(u"refresh"_s, this))
    , deviceHint_(makeHint(this))
    , devicePage_(makeListPage(devices_, refreshDevices_))
    , systemHint_(makeHint(this))
    , apps_(new FieldCombo(FieldCombo::Search::None, this))
    , refreshApps_(new IconButton(u"refresh"_s, this))
    , appHint_(makeHint(this))
    , appPage_(makeListPage(apps_, refreshApps_))
    , permission_(new QWidget(this))
    , permissionText_(new ToneLabel(permission_, Tone::Error))
    , checkPermission_(makeButton(permission_))
    , levelLabel_(new QLabel(this))
    , level_(new LevelBar(this))
    , autoGain_(new SwitchRow(this))
    , gain_(new SliderField(
          lowestGain, highestGain, gainStep,
          [&l10n](int percent) { return percentText(l10n.current(), percent); }, this)) {
    layOut();
    connectFields();
    translate();
    showSource();
    showGain();
}

void SourceSection::layOut() {
    devicePage_->layout()->addWidget(deviceHint_);
    appPage_->layout()->addWidget(appHint_);
    rows()->addWidget(sources_);
    rows()->addWidget(devicePage_);
    rows()->addWidget(systemHint_);
    rows()->addWidget(appPage_);
    rows()->addWidget(makePermissionRow());
    rows()->addWidget(makeLevelRow());
    rows()->addWidget(gain_);
}

QWidget* SourceSection::makeListPage(FieldCombo* combo, IconButton* refresh) {
    auto* page = new QWidget(this);
    auto* row = new QHBoxLayout;
    row->setSpacing(space::small);
    row->addWidget(combo, 1);
    row->addWidget(refresh);
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(space::tiny);
    column->addLayout(row);
    return page;
}

QWidget* SourceSection::makePermissionRow() {
    auto* row = new QHBoxLayout(permission_);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::small);
    row->addWidget(permissionText_, 1);
    row->addWidget(checkPermission_);
    return permission_;
}

QWidget* SourceSection::makeLevelRow() {
    auto* widget = new QWidget(this);
    auto* row = new QHBoxLayout(widget);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::medium);
    row->addWidget(levelLabel_);
    row->addWidget(level_, 1);
    autoGain_->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    row->addWidget(autoGain_);
    return widget;
}

void SourceSection::connectFields() {
    connect(sources_, &SegmentedControl::chosen, this,
            [this](int id) { settings_.audioSourceType.set(static_cast<AudioSourceType>(id)); });
    connect(devices_, &FieldCombo::chosen, this,
            [this](const QString& id) { settings_.selectedInputDevice.set(id); });
    connect(apps_, &FieldCombo::chosen, this, &SourceSection::chooseApp);
    for (QAbstractButton* refresh : {static_cast<QAbstractButton*>(refreshDevices_),
                                     static_cast<QAbstractButton*>(refreshApps_),
                                     static_cast<QAbstractButton*>(checkPermission_)}) {
        connect(refresh, &QAbstractButton::clicked, this, [this] { audio_.refreshLists(); });
    }
    connect(autoGain_, &QCheckBox::toggled, this, [this](bool on) { settings_.autoGain.set(on); });
    connect(gain_, &SliderField::chosen, this,
            [this](int percent) { settings_.audioGain.set(static_cast<float>(percent) / 100.0F); });
    connect(&audio_, &AudioManager::listsChanged, this, &SourceSection::refreshLists);
    connect(&audio_, &AudioManager::levelChanged, this,
            [this] { level_->setLevels(audio_.audioLevel(), audio_.peakLevel()); });
    watchAll({&settings_.audioSourceType}, this, [this] { showSource(); });
    watchAll({&settings_.selectedInputDevice, &settings_.selectedAppBundleId}, this,
             [this] { refreshLists(); });
    watchAll({&settings_.audioGain, &settings_.autoGain}, this, [this] { showGain(); });
    connect(&l10n_, &L10n::currentChanged, this, &SourceSection::translate);
}

void SourceSection::translate() {
    ORV_ON_MAIN();
    const auto text = [this](const QString& key) { return l10n_.platformText(key); };
    heading_->setText(text(u"audio.source"_s));
    sources_->setAccessibleName(text(u"audio.type"_s));
    sources_->setSegmentText(idOf(AudioSourceType::Microphone), text(u"audio.mic"_s));
    sources_->setSegmentText(idOf(AudioSourceType::SystemAudio), text(u"audio.system"_s));
    sources_->setSegmentText(idOf(AudioSourceType::SingleApp), text(u"audio.app"_s));
    devices_->setAccessibleName(text(u"audio.mic.label"_s));
    systemHint_->setText(
        QString(text(u"audio.capture.all"_s) % u'\n' % text(u"audio.drm.warning"_s)));
    apps_->setAccessibleName(text(u"audio.app.select"_s));
    apps_->setToolTip(text(u"audio.app.only"_s));
    refreshDevices_->setText(text(u"audio.app.refresh"_s));
    refreshApps_->setText(text(u"audio.app.refresh"_s));
    permissionText_->setText(text(u"audio.permission.needed"_s));
    checkPermission_->setText(text(u"audio.permission.request"_s));
    nameField(levelLabel_, level_, text(u"audio.level"_s));
    autoGain_->setText(text(u"audio.gain.auto"_s));
    gain_->setName(text(u"audio.gain.label"_s));
    refreshLists();
}

void SourceSection::showSource() {
    ORV_ON_MAIN();
    const AudioSourceType source = settings_.audioSourceType.get();
    sources_->setChosen(idOf(source));
    devicePage_->setVisible(source == AudioSourceType::Microphone);
    systemHint_->setVisible(source == AudioSourceType::SystemAudio);
    appPage_->setVisible(source == AudioSourceType::SingleApp);
}

void SourceSection::showGain() {
    ORV_ON_MAIN();
    autoGain_->setShown(settings_.autoGain.get());
    gain_->setValue(static_cast<int>(std::lround(settings_.audioGain.get() * 100.0F)));
    gain_->setVisible(!settings_.autoGain.get());
}

void SourceSection::refreshLists() {
    ORV_ON_MAIN();
    const auto text = [this](const QString& key) { return l10n_.platformText(key); };
    const QString device = settings_.selectedInputDevice.get().value_or(QString());
    devices_->setEntries(deviceEntries(audio_.inputDevices(), device, text), device);
    const QString app = settings_.selectedAppBundleId.get().value_or(QString());
    for (const RunningApp& one : audio_.capturableApps()) {
        appNames_.insert(one.bundleId, one.name);
    }
    const RunningApp chosen = {.bundleId = app, .name = appNames_.value(app)};
    apps_->setEntries(appEntries(audio_.capturableApps(), chosen, text), app);
    const bool reachable = audio_.hasScreenCapturePermission();
    deviceHint_->setText(deviceHint(audio_.inputDevices(), reachable, text));
    deviceHint_->setVisible(!deviceHint_->text().isEmpty());
    appHint_->setText(appHint(audio_.capturableApps(), reachable, text));
    devices_->setToolTip(reachable ? text(u"audio.permission.granted"_s) : QString());
    permission_->setVisible(!reachable);
}

void SourceSection::chooseApp(const QString& bundleId) {
    ORV_ON_MAIN();
    const QList<RunningApp> apps = audio_.capturableApps();
    const auto chosen = std::find_if(apps.cbegin(), apps.cend(), [&](const RunningApp& app) {
        return app.bundleId == bundleId;
    });
    settings_.selectedApp.set(chosen == apps.cend() ? std::nullopt : std::optional(*chosen));
    settings_.selectedAppBundleId.set(bundleId);
}

} // namespace orv
