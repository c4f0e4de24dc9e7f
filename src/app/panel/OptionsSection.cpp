#include "OptionsSection.h"

#include "AudioManager.h"
#include "L10n.h"
#include "Pieces.h"
#include "Theme.h"
#include "TranslationSettings.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Shows a state without taking it for the user's choice.
void setShown(QCheckBox* box, bool checked) {
    const QSignalBlocker blocker(box);
    box->setChecked(checked);
}

} // namespace

OptionsSection::OptionsSection(AudioManager& audio, TranslationSettings& settings, L10n& l10n,
                               QWidget* parent)
    : QWidget(parent)
    , audio_(audio)
    , settings_(settings)
    , l10n_(l10n)
    , pauseDetection_(new QCheckBox(this))
    , pauseState_(makeHint(this))
    , overlay_(new QCheckBox(this))
    , original_(new QCheckBox(this))
    , transcript_(new QCheckBox(this))
    , speak_(new QCheckBox(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(space::small / 2);
    pauseState_->setWordWrap(false);
    auto* pauseRow = new QHBoxLayout;
    pauseRow->addWidget(pauseDetection_);
    pauseRow->addStretch(1);
    pauseRow->addWidget(pauseState_);
    layout->addLayout(pauseRow);
    layout->addWidget(overlay_);
    layout->addWidget(original_);
    layout->addWidget(transcript_);
    layout->addWidget(speak_);
    // Toggled, not clicked: assistive programs switch without a click.
    connect(pauseDetection_, &QCheckBox::toggled, this, [this](bool checked) {
        audio_.setVadEnabled(checked);
        refresh();
    });
    connect(overlay_, &QCheckBox::toggled, this,
            [this](bool checked) { settings_.showOverlay.set(checked); });
    connect(speak_, &QCheckBox::toggled, this,
            [this](bool checked) { settings_.speakTranslation.set(checked); });
    connect(original_, &QCheckBox::toggled, this,
            [this](bool checked) { settings_.showOriginal.set(checked); });
    connect(transcript_, &QCheckBox::toggled, this,
            [this](bool checked) { settings_.saveTranscript.set(checked); });
    connect(&settings_, &TranslationSettings::changed, this, &OptionsSection::refresh);
    connect(&l10n_, &L10n::currentChanged, this, &OptionsSection::translate);
    translate();
}

void OptionsSection::translate() {
    pauseDetection_->setText(l10n_.platformText(u"vad.toggle"_s));
    overlay_->setText(l10n_.platformText(u"option.overlay"_s));
    speak_->setText(l10n_.platformText(u"option.speak"_s));
    original_->setText(l10n_.platformText(u"option.original"_s));
    transcript_->setText(l10n_.platformText(u"option.transcript"_s));
    refresh();
}

void OptionsSection::refresh() {
    setShown(pauseDetection_, audio_.vadEnabled());
    pauseState_->setText(
        l10n_.platformText(audio_.vadEnabled() ? u"vad.active"_s : u"vad.fixed"_s));
    setShown(overlay_, settings_.showOverlay.get());
    setShown(speak_, settings_.speakTranslation.get());
    setShown(original_, settings_.showOriginal.get());
    setShown(transcript_, settings_.saveTranscript.get());
}

} // namespace orv
