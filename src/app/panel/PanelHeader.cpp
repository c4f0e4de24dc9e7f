#include "PanelHeader.h"

#include "Buttons.h"
#include "ElidedLabel.h"
#include "SymbolView.h"
#include "Symbols.h"
#include "TextLabels.h"
#include "Theme.h"
#include "ThreadChecks.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int pictureSide = 36;

} // namespace

PanelHeader::PanelHeader(QWidget* parent)
    : QWidget(parent)
    , title_(makeTitle(this))
    , state_(new ElidedLabel(this, Tone::Quiet))
    , settings_(new IconButton(u"gear"_s, this))
    , quit_(new IconButton(u"power"_s, this)) {
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addWidget(title_);
    texts->addWidget(state_);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(space::tiny);
    row->addWidget(new SymbolView(appPicture(), pictureSide, this));
    row->addSpacing(space::small);
    row->addLayout(texts, 1);
    for (IconButton* button : {settings_, quit_}) {
        setButtonKind(*button, ButtonKind::Quiet);
        row->addWidget(button);
    }
    connect(settings_, &QAbstractButton::clicked, this, &PanelHeader::settingsWanted);
    connect(quit_, &QAbstractButton::clicked, this, &PanelHeader::quitWanted);
}

void PanelHeader::translate(const TextLookup& text) {
    ORV_ON_MAIN();
    title_->setText(text(u"app.name.short"_s));
    settings_->setText(text(u"main.settings"_s));
    quit_->setText(text(u"main.quit"_s));
    purpose_ = text(u"app.subtitle"_s);
    showStatus();
}

void PanelHeader::setStatus(const StatusLine& status) {
    ORV_ON_MAIN();
    status_ = status;
    showStatus();
}

void PanelHeader::showStatus() {
    const bool idle = status_.headline.isEmpty();
    QString line = idle ? purpose_ : status_.headline;
    if (!idle && !status_.detail.isEmpty()) {
        line += u" \u00B7 " % status_.detail;
    }
    state_->setText(line);
    state_->setTone(idle ? Tone::Quiet : status_.tone);
}

} // namespace orv
