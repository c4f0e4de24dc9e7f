#include "SwitchRow.h"

#include "StyleButtons.h"
#include "Theme.h"
#include "ToneLabel.h"

#include <QHBoxLayout>
#include <QSignalBlocker>

namespace orv {

SwitchRow::SwitchRow(QWidget* parent)
    : QCheckBox(parent)
    , note_(new ToneLabel(this, Tone::Quiet)) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    note_->setWordWrap(false);
    note_->setAttribute(Qt::WA_TransparentForMouseEvents);
    note_->hide();
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, switchSize().width() + space::small, 0);
    row->addStretch(1);
    row->addWidget(note_);
}

void SwitchRow::setNote(const QString& note) {
    note_->setText(note);
    note_->setVisible(!note.isEmpty());
    setAccessibleDescription(note);
    updateGeometry();
}

void SwitchRow::setShown(bool on) {
    const QSignalBlocker blocker(this);
    setChecked(on);
}

QSize SwitchRow::sizeHint() const {
    QSize size = QCheckBox::sizeHint();
    if (!note_->isHidden()) {
        size.rwidth() += note_->sizeHint().width() + space::small;
    }
    return size;
}

QSize SwitchRow::minimumSizeHint() const {
    return sizeHint();
}

bool SwitchRow::hitButton(const QPoint& point) const {
    return rect().contains(point);
}

} // namespace orv
