#include "ResultSection.h"

#include "ElidedLabel.h"
#include "Pieces.h"
#include "Theme.h"

#include <QFont>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Height of the box for the latest result, in lines of text; a long status line takes from it.
constexpr int resultLines = 7;
constexpr int fewestResultLines = 4;

/// Scrolls the latest result; asks for the height it should have rather than that of its content.
class ResultArea : public QScrollArea {
  public:
    using QScrollArea::QScrollArea;

    QSize sizeHint() const override {
        return {QScrollArea::sizeHint().width(), fontMetrics().lineSpacing() * resultLines};
    }
};

QColor toneColor(StatusTone tone, const QPalette& palette) {
    const bool dark = palette.color(QPalette::Window).lightness() < 128;
    switch (tone) {
    case StatusTone::Busy:
        return dark ? QColor(0xfb, 0xbf, 0x24) : QColor(0x92, 0x40, 0x0e);
    case StatusTone::Good:
        return dark ? QColor(0x4a, 0xde, 0x80) : QColor(0x15, 0x80, 0x3d);
    case StatusTone::Error:
        return dark ? QColor(0xf8, 0x71, 0x71) : QColor(0xb9, 0x1c, 0x1c);
    case StatusTone::Neutral:
        break;
    }
    return palette.color(QPalette::WindowText);
}

} // namespace

ResultSection::ResultSection(QWidget* parent)
    : QWidget(parent)
    , headline_(makeText(this))
    , detail_(new ElidedLabel(this))
    , notice_(makeNotice()) {
    detail_->setForegroundRole(QPalette::PlaceholderText);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(space::small / 2);
    layout->addWidget(notice_);
    layout->addWidget(headline_);
    layout->addWidget(detail_);
    layout->addWidget(makeTexts(), 1);
    setStatus({});
}

QWidget* ResultSection::makeNotice() {
    auto* frame = new QFrame(this);
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setAutoFillBackground(true);
    frame->setBackgroundRole(QPalette::ToolTipBase);
    noticeText_ = makeText(frame);
    noticeText_->setForegroundRole(QPalette::ToolTipText);
    closeNotice_ = makeButton(frame);
    auto* row = new QHBoxLayout(frame);
    row->addWidget(noticeText_, 1);
    row->addWidget(closeNotice_, 0, Qt::AlignTop);
    connect(closeNotice_, &QPushButton::clicked, frame, &QWidget::hide);
    frame->hide();
    return frame;
}

QWidget* ResultSection::makeTexts() {
    auto* area = new ResultArea(this);
    auto* content = new QWidget(area);
    original_ = makeText(content);
    original_->setForegroundRole(QPalette::PlaceholderText);
    translation_ = makeText(content);
    QFont font = translation_->font();
    font.setPointSizeF(font.pointSizeF() * 1.25);
    translation_->setFont(font);
    auto* layout = new QVBoxLayout(content);
    layout->setSpacing(space::small / 2);
    layout->addWidget(original_);
    layout->addWidget(translation_);
    layout->addStretch(1);
    area->setWidget(content);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setMinimumHeight(fontMetrics().lineSpacing() * fewestResultLines);
    content->setBackgroundRole(QPalette::Base);
    return area;
}

void ResultSection::setStatus(const StatusLine& status) {
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, toneColor(status.tone, colors));
    headline_->setPalette(colors);
    headline_->setText(status.headline);
    detail_->setText(status.detail);
}

void ResultSection::setResult(const QString& original, const QString& translation) {
    original_->setText(original);
    translation_->setText(translation);
}

void ResultSection::showNotice(const QString& text, const QString& closeText) {
    noticeText_->setText(text);
    closeNotice_->setText(closeText);
    notice_->show();
}

} // namespace orv
