#include "ToneLabel.h"

#include <QEvent>

namespace orv {

ToneLabel::ToneLabel(QWidget* parent, Tone tone)
    : QLabel(parent)
    , tone_(tone) {
    setTextFormat(Qt::PlainText);
    // Not whatever the widget round it uses.
    setForegroundRole(QPalette::WindowText);
    setWordWrap(true);
    applyTone();
}

void ToneLabel::setTone(Tone tone) {
    tone_ = tone;
    applyTone();
}

void ToneLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange) {
        applyTone();
    }
}

void ToneLabel::applyTone() {
    const QColor color = themeOf(*this).toneColor(tone_);
    if (palette().color(QPalette::Active, QPalette::WindowText) == color) {
        return;
    }
    QPalette own;
    own.setColor(QPalette::Active, QPalette::WindowText, color);
    own.setColor(QPalette::Inactive, QPalette::WindowText, color);
    setPalette(own);
}

} // namespace orv
