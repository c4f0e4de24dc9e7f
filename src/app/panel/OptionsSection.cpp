#include "OptionsSection.h"

#include "L10n.h"
#include "SliderField.h"
#include "SwitchRow.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "TranslationSettings.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <cmath>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

// What a person would try: a pause shorter than a breath cuts words, a longer one than two seconds
// keeps everyone waiting; speech lies well within these levels.
constexpr int shortestPause = 200; ///< Milliseconds.
constexpr int longestPause = 2000;
constexpr int pauseStep = 50;
constexpr int lowestThreshold = -60; ///< dB.
constexpr int highestThreshold = -10;

QString pauseText(int milliseconds) {
    return QString(QString::number(milliseconds) % u"\u00A0ms");
}

QString thresholdText(int db) {
    return QString(u'\u2212' % QString::number(std::abs(db)) % u"\u00A0dB");
}

} // namespace

OptionsSection::OptionsSection(TranslationSettings& settings, L10n& l10n, QWidget* parent)
    : Card(parent)
    , settings_(settings)
    , l10n_(l10n)
    , overlay_(new SwitchRow(this))
    , original_(new SwitchRow(this))
    , transcript_(new SwitchRow(this))
    , speak_(new SwitchRow(this))
    , pauseDetection_(new SwitchRow(this))
    , pauseFields_(new QWidget(this))
    , pauseLength_(new SliderField(shortestPause, longestPause, pauseStep, pauseText, pauseFields_))
    , threshold_(
          new SliderField(lowestThreshold, highestThreshold, 1, thresholdText, pauseFields_)) {
    layOut();
    connectFields();
    translate();
}

void OptionsSection::layOut() {
    rows()->setSpacing(space::tiny);
    rows()->setContentsMargins(space::medium, space::small, space::medium, space::small);
    for (SwitchRow* row : {overlay_, original_, transcript_, speak_, pauseDetection_}) {
        rows()->addWidget(row);
    }
    auto* fields = new QHBoxLayout(pauseFields_);
    fields->setContentsMargins(0, 0, 0, 0);
    fields->setSpacing(space::huge);
    fields->addWidget(pauseLength_, 1);
    fields->addWidget(threshold_, 1);
    rows()->addWidget(pauseFields_);
}

void OptionsSection::connectFields() {
    // Toggled, not clicked: assistive programs switch without a click.
    connect(overlay_, &QCheckBox::toggled, this,
            [this](bool on) { settings_.showOverlay.set(on); });
    connect(original_, &QCheckBox::toggled, this,
            [this](bool on) { settings_.showOriginal.set(on); });
    connect(transcript_, &QCheckBox::toggled, this,
            [this](bool on) { settings_.saveTranscript.set(on); });
    connect(speak_, &QCheckBox::toggled, this,
            [this](bool on) { settings_.speakTranslation.set(on); });
    connect(pauseDetection_, &QCheckBox::toggled, this,
            [this](bool on) { settings_.vadEnabled.set(on); });
    connect(pauseLength_, &SliderField::chosen, this,
            [this](int milliseconds) { settings_.vadSilenceDuration.set(milliseconds); });
    connect(threshold_, &SliderField::chosen, this,
            [this](int db) { settings_.vadThreshold.set(static_cast<float>(db)); });
    watchAll({&settings_.showOverlay, &settings_.showOriginal, &settings_.saveTranscript,
              &settings_.speakTranslation, &settings_.vadEnabled, &settings_.vadSilenceDuration,
              &settings_.vadThreshold},
             this, [this] { refresh(); });
    connect(&l10n_, &L10n::currentChanged, this, &OptionsSection::translate);
}

void OptionsSection::translate() {
    ORV_ON_MAIN();
    overlay_->setText(l10n_.platformText(u"option.overlay"_s));
    original_->setText(l10n_.platformText(u"option.original"_s));
    transcript_->setText(l10n_.platformText(u"option.transcript"_s));
    speak_->setText(l10n_.platformText(u"option.speak"_s));
    pauseDetection_->setText(l10n_.platformText(u"vad.toggle"_s));
    pauseLength_->setName(l10n_.platformText(u"vad.pause"_s));
    threshold_->setName(l10n_.platformText(u"vad.threshold"_s));
    refresh();
}

void OptionsSection::refresh() {
    ORV_ON_MAIN();
    overlay_->setShown(settings_.showOverlay.get());
    original_->setShown(settings_.showOriginal.get());
    transcript_->setShown(settings_.saveTranscript.get());
    speak_->setShown(settings_.speakTranslation.get());
    const bool detects = settings_.vadEnabled.get();
    pauseDetection_->setShown(detects);
    pauseDetection_->setNote(l10n_.platformText(detects ? u"vad.active"_s : u"vad.fixed"_s));
    pauseFields_->setVisible(detects);
    pauseLength_->setValue(static_cast<int>(std::lround(settings_.vadSilenceDuration.get())));
    threshold_->setValue(static_cast<int>(std::lround(settings_.vadThreshold.get())));
}

} // namespace orv
