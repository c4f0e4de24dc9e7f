#include "WhisperPackageRow.h"

#include "BackendTexts.h"
#include "Bindings.h"
#include "Buttons.h"
#include "CardRows.h"
#include "QuantityTexts.h"
#include "Symbols.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"
#include "ToneLabel.h"

#include <QLabel>
#include <QPushButton>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

using Work = WhisperPackages::Work;

int megabytes(std::int64_t bytes) {
    return static_cast<int>(bytes / 1'000'000);
}

} // namespace

WhisperPackageRow::WhisperPackageRow(QString package, WhisperPackages& packages, Bindings& bindings,
                                     QWidget* parent)
    : QWidget(parent)
    , name_(std::move(package))
    , packages_(packages)
    , bindings_(bindings)
    , size_(makeHint(this))
    , state_(new ToneLabel(this))
    , detail_(makeHint(this))
    , action_(makeButton(this)) {
    QLabel* name = makeHeading(this);
    name->setText(name_);
    state_->setWordWrap(false);
    layOutActionRow(*this, {name, state_}, {size_, detail_}, action_);
    connect(action_, &QPushButton::clicked, this, &WhisperPackageRow::act);
    connect(&packages_, &WhisperPackages::changed, this, &WhisperPackageRow::refresh);
    bindings_.translated(this, [this] { refresh(); });
}

WhisperPackage WhisperPackageRow::package() const {
    for (const WhisperPackage& candidate : packages_.inventory().packages) {
        if (candidate.name == name_) {
            return candidate;
        }
    }
    return {.name = name_};
}

QString WhisperPackageRow::stateText() const {
    switch (packages_.work(name_)) {
    case Work::Installing:
        if (const std::optional<int> percent = packages_.percent()) {
            return bindings_.text(u"settings.whisper.progress"_s)
                .arg(percentText(bindings_.language(), *percent));
        }
        return bindings_.text(u"settings.whisper.installing"_s).arg(packages_.step()).trimmed();
    case Work::Removing:
        return bindings_.text(u"settings.whisper.removing"_s);
    case Work::None:
        break;
    }
    if (!packages_.failure(name_).isEmpty()) {
        return bindings_.text(u"settings.whisper.failed.short"_s);
    }
    const WhisperPackage found = package();
    switch (found.presence) {
    case Presence::There:
        return bindings_.text(packages_.inventory().serves == name_
                                  ? u"settings.whisper.serves"_s
                                  : u"settings.whisper.installed"_s);
    case Presence::Unusable:
        return bindings_.text(u"settings.whisper.unusable"_s);
    default:
        return {};
    }
}

void WhisperPackageRow::refresh() {
    ORV_ON_MAIN();
    const WhisperPackage found = package();
    size_->setText(bindings_.text(u"settings.whisper.size"_s)
                       .arg(fileSizeText(bindings_.language(), megabytes(found.downloadBytes)),
                            fileSizeText(bindings_.language(), megabytes(found.diskBytes))));
    size_->setVisible(found.presence == Presence::Missing);
    const bool isAtWork = packages_.work(name_) != Work::None;
    const QString failure = packages_.failure(name_);
    const BackendText why =
        backendText(found.why, [this](const QString& key) { return bindings_.text(key); });
    detail_->setText(
        withBreaks(failure.isEmpty() ? why.summary + u'\n' + why.detail : failure).trimmed());
    detail_->setVisible(!isAtWork && !detail_->text().isEmpty());
    const QString text = stateText();
    state_->setText(text);
    state_->setTone(isAtWork                               ? Tone::Busy
                    : !failure.isEmpty()                   ? Tone::Error
                    : found.presence == Presence::Unusable ? Tone::Error
                                                           : Tone::Good);
    state_->setVisible(!text.isEmpty());
    showAction();
}

void WhisperPackageRow::showAction() {
    const bool isAtWork = packages_.work(name_) != Work::None;
    const bool isThere = package().presence == Presence::There;
    const QString cancel = bindings_.text(u"settings.whisper.cancel"_s);
    const QString remove = bindings_.text(u"settings.whisper.uninstall"_s);
    const QString install = bindings_.text(u"settings.whisper.install"_s);
    action_->setText(isAtWork ? cancel : isThere ? remove : install);
    action_->setIcon(symbol(isAtWork ? u"close"_s : isThere ? u"trash"_s : u"download"_s));
    reserveWidth(*action_, {cancel, remove, install});
    action_->setAccessibleName(name_ + u": "_s + action_->text());
    action_->setEnabled(isAtWork || !packages_.isAtWork());
    action_->setVisible(packages_.canChange());
}

void WhisperPackageRow::act() {
    ORV_ON_MAIN();
    if (packages_.work(name_) != Work::None) {
        packages_.giveUp();
    } else if (package().presence == Presence::There) {
        packages_.remove(name_);
    } else {
        packages_.install(name_);
    }
}

} // namespace orv
