#include "SourceSection.h"

#include "AudioManager.h"
#include "FieldCombo.h"
#include "L10n.h"
#include "LevelBar.h"
#include "PanelState.h"
#include "Pieces.h"
#include "Theme.h"
#include "TranslationSettings.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// The pages take as much room as the highest one asks for, whichever is shown. Without this the
/// text that wraps would decide alone.
class SourcePages : public QStackedWidget {
  public:
    using QStackedWidget::QStackedWidget;

    bool hasHeightForWidth() const override { return false; }
};

int pageOf(AudioSourceType source) {
    return static_cast<int>(source);
}

} // namespace

SourceSection::SourceSection(AudioManager& audio, TranslationSettings& settings, L10n& l10n,
                             QWidget* parent)
    : QWidget(parent)
    , audio_(audio)
    , settings_(settings)
    , l10n_(l10n)
    , heading_(makeHeading(this))
    , sources_(new QButtonGroup(this))
    , pages_(new SourcePages(this))
    , deviceLabel_(new QLabel(this))
    , devices_(new FieldCombo(FieldCombo::Search::None, this))
    , refreshDevices_(makeButton(this))
    , systemHint_(makeHint(this))
    , appLabel_(new QLabel(this))
    , apps_(new FieldCombo(FieldCombo::Search::None, this))
    , refreshApps_(makeButton(this))
    , permission_(new QWidget(this))
    , permissionText_(new QLabel(permission_))
    , checkPermission_(makeButton(permission_))
    , levelLabel_(new QLabel(this))
    , level_(new LevelBar(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(space::small);
    layout->addWidget(heading_);
    addSourceButtons(layout);
    addPages(layout);
    layout->addWidget(makePermissionRow());
    auto* levelRow = new QHBoxLayout;
    levelRow->setSpacing(space::small);
    levelRow->addWidget(levelLabel_);
    levelRow->addWidget(level_, 1);
    layout->addLayout(levelRow);
    connectFields();
    translate();
    showSource();
}

void SourceSection::addSourceButtons(QVBoxLayout* layout) {
    auto* row = new QHBoxLayout;
    row->setSpacing(space::small / 2);
    for (const AudioSourceType source :
         {AudioSourceType::Microphone, AudioSourceType::SystemAudio, AudioSourceType::SingleApp}) {
        auto* button = makeButton(this);
        button->setCheckable(true);
        sources_->addButton(button, pageOf(source));
        sourceButtons_.insert(source, button);
        row->addWidget(button, 1);
    }
    layout->addLayout(row);
}

void SourceSection::addPages(QVBoxLayout* layout) {
    pages_->addWidget(makeListPage(deviceLabel_, devices_, refreshDevices_));
    systemHint_->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    pages_->addWidget(systemHint_);
    pages_->addWidget(makeListPage(appLabel_, apps_, refreshApps_));
    layout->addWidget(pages_);
}

QWidget* SourceSection::makeListPage(QLabel* label, FieldCombo* combo, QPushButton* refresh) {
    auto* page = new QWidget(pages_);
    auto* grid = new QGridLayout(page);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(space::small / 2);
    grid->addWidget(label, 0, 0, 1, 2);
    grid->addWidget(combo, 1, 0);
    grid->addWidget(refresh, 1, 1);
    grid->setColumnStretch(0, 1);
    return page;
}

QWidget* SourceSection::makePermissionRow() {
    permissionText_->setWordWrap(true);
    auto* row = new QHBoxLayout(permission_);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::small);
    row->addWidget(permissionText_, 1);
    row->addWidget(checkPermission_);
    return permission_;
}

void SourceSection::connectFields() {
    // Toggled, not clicked: assistive programs switch without a click.
    connect(sources_, &QButtonGroup::idToggled, this, [this](int id, bool checked) {
        if (checked) {
            settings_.audioSourceType.set(static_cast<AudioSourceType>(id));
        }
    });
    connect(devices_, &FieldCombo::chosen, this,
            [this](const QString& id) { settings_.selectedInputDevice.set(id); });
    connect(apps_, &FieldCombo::chosen, this, &SourceSection::chooseApp);
    for (QPushButton* refresh : {refreshDevices_, refreshApps_, checkPermission_}) {
        connect(refresh, &QPushButton::clicked, this, [this] { audio_.refreshLists(); });
    }
    connect(&audio_, &AudioManager::listsChanged, this, &SourceSection::refreshLists);
    connect(&audio_, &AudioManager::levelChanged, this,
            [this] { level_->setLevels(audio_.audioLevel(), audio_.peakLevel()); });
    connect(&settings_, &TranslationSettings::changed, this, [this](const QString& key) {
        if (key == "audioSourceType"_L1) {
            showSource();
        } else if (key == "selectedInputDevice"_L1 || key == "selectedAppBundleId"_L1) {
            refreshLists();
        }
    });
    connect(&l10n_, &L10n::currentChanged, this, &SourceSection::translate);
}

void SourceSection::translate() {
    heading_->setText(l10n_.platformText(u"audio.source"_s));
    sourceButtons_[AudioSourceType::Microphone]->setText(l10n_.platformText(u"audio.mic"_s));
    sourceButtons_[AudioSourceType::SystemAudio]->setText(l10n_.platformText(u"audio.system"_s));
    sourceButtons_[AudioSourceType::SingleApp]->setText(l10n_.platformText(u"audio.app"_s));
    nameField(deviceLabel_, devices_, l10n_.platformText(u"audio.mic.label"_s));
    systemHint_->setText(QString(l10n_.platformText(u"audio.capture.all"_s) % u'\n' %
                                 l10n_.platformText(u"audio.drm.warning"_s)));
    nameField(appLabel_, apps_, l10n_.platformText(u"audio.app.select"_s));
    refreshDevices_->setText(l10n_.platformText(u"audio.app.refresh"_s));
    refreshApps_->setText(l10n_.platformText(u"audio.app.refresh"_s));
    permissionText_->setText(l10n_.platformText(u"audio.permission.needed"_s));
    checkPermission_->setText(l10n_.platformText(u"audio.permission.request"_s));
    nameField(levelLabel_, level_, l10n_.platformText(u"audio.level"_s));
    refreshLists();
}

void SourceSection::showSource() {
    const AudioSourceType source = settings_.audioSourceType.get();
    const QSignalBlocker blocker(sources_);
    sourceButtons_[source]->setChecked(true);
    pages_->setCurrentIndex(pageOf(source));
}

void SourceSection::refreshLists() {
    const auto text = [this](const QString& key) { return l10n_.platformText(key); };
    const QString device = settings_.selectedInputDevice.get().value_or(QString());
    devices_->setEntries(deviceEntries(audio_.inputDevices(), device, text), device);
    const QString app = settings_.selectedAppBundleId.get().value_or(QString());
    apps_->setEntries(appEntries(audio_.capturableApps(), app, text), app);
    permission_->setVisible(!audio_.hasScreenCapturePermission());
}

void SourceSection::chooseApp(const QString& bundleId) {
    const QList<RunningApp> apps = audio_.capturableApps();
    const auto chosen = std::find_if(apps.cbegin(), apps.cend(), [&](const RunningApp& app) {
        return app.bundleId == bundleId;
    });
    settings_.selectedApp.set(chosen == apps.cend() ? std::nullopt : std::optional(*chosen));
    settings_.selectedAppBundleId.set(bundleId);
}

} // namespace orv
