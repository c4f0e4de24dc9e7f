#include "ElidedLabel.h"

#include <QPainter>

namespace orv {

ElidedLabel::ElidedLabel(QWidget* parent, Tone tone)
    : ToneLabel(parent, tone) {
    setWordWrap(false);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void ElidedLabel::setText(const QString& text) {
    QLabel::setText(text);
    setToolTip(text.toHtmlEscaped());
}

QSize ElidedLabel::minimumSizeHint() const {
    return {0, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), Qt::ElideRight, width()));
}

} // namespace orv
