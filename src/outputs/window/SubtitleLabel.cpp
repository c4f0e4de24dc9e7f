#include "SubtitleLabel.h"

#include <QPainter>

#include <utility>

namespace orv {

SubtitleLabel::SubtitleLabel(QWidget* parent)
    : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignCenter);
}

void SubtitleLabel::setSubtitle(SubtitleText text) {
    subtitle_ = std::move(text);
    setText(subtitle_.text());
    update();
}

void SubtitleLabel::setColor(const QColor& color) {
    color_ = color;
    update();
}

void SubtitleLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(color_);
    subtitle_.draw(painter, {0, 0});
}

} // namespace orv
