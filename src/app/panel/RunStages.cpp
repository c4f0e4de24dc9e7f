#include "RunStages.h"

#include "AudioManager.h"
#include "L10n.h"
#include "RunTexts.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"

#include <QHBoxLayout>
#include <QLabel>

#include <array>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct Stage {
    const char16_t* key;
    std::optional<RunProgress::TimePoint> RunProgress::*reached;
};

constexpr std::array<Stage, 4> stageTable = {{
    {u"run.stage.sound", &RunProgress::soundArrived},
    {u"run.stage.speech", &RunProgress::speechHeard},
    {u"run.stage.sent", &RunProgress::sent},
    {u"run.stage.answered", &RunProgress::answered},
}};

} // namespace

RunStages::RunStages(AudioManager& audio, L10n& l10n, QWidget* parent)
    : QWidget(parent)
    , audio_(audio)
    , l10n_(l10n) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(space::medium, 0, space::medium, 0); // Below the cards' texts.
    row->setSpacing(space::medium);
    for (std::size_t stage = 0; stage < stageTable.size(); ++stage) {
        QLabel* label = makeHint(this);
        label->setWordWrap(false);
        stages_.append(label);
        row->addWidget(label, 1);
    }
    connect(&audio_, &AudioManager::progressChanged, this, &RunStages::refresh);
    connect(&l10n_, &L10n::currentChanged, this, &RunStages::refresh);
    refresh();
}

void RunStages::refresh() {
    ORV_ON_MAIN();
    const RunProgress& progress = audio_.progress();
    setVisible(progress.isOn);
    if (!progress.isOn) {
        return;
    }
    const auto text = [this](const QString& key) { return l10n_.platformText(key); };
    const auto now = RunProgress::TimePoint::clock::now();
    for (qsizetype i = 0; i < stages_.size(); ++i) {
        const Stage& stage = stageTable.at(static_cast<std::size_t>(i));
        const QString name = text(QString::fromUtf16(stage.key));
        const QString time = stageTime(progress.*stage.reached, now, text);
        stages_[i]->setText(name % u'\n' % time);
        stages_[i]->setAccessibleName(name % u": " % time);
    }
}

} // namespace orv
