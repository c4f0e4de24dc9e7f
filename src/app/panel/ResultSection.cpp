#include "ResultSection.h"

#include "ElidedLabel.h"
#include "ReadingText.h"
#include "Theme.h"
#include "ToneLabel.h"

#include <QVBoxLayout>

namespace orv {

namespace {

/// Room for the latest result, in lines of text; a long error takes from it.
constexpr int resultLines = 5;
constexpr int fewestResultLines = 3;

/// Asks for the height it should have rather than that of its content.
class ResultTexts : public ReadingText {
  public:
    using ReadingText::ReadingText;

    QSize sizeHint() const override { return {0, fontMetrics().lineSpacing() * resultLines}; }

    QSize minimumSizeHint() const override {
        return {0, fontMetrics().lineSpacing() * fewestResultLines};
    }
};

} // namespace

ResultSection::ResultSection(QWidget* parent)
    : Card(parent)
    , texts_(new ResultTexts(this))
    , error_(new ToneLabel(this, Tone::Error))
    , detail_(new ElidedLabel(this, Tone::Quiet)) {
    error_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    rows()->addWidget(texts_, 1);
    rows()->addWidget(error_);
    rows()->addWidget(detail_);
    setStatus({});
}

void ResultSection::setStatus(const StatusLine& status) {
    const bool failed = status.tone == Tone::Error;
    error_->setText(failed ? status.headline : QString());
    error_->setVisible(failed);
    detail_->setText(status.detail);
    detail_->setVisible(!status.detail.isEmpty());
}

void ResultSection::setResult(const QString& original, const QString& translation) {
    texts_->setTexts(original, translation);
}

void ResultSection::setEmptyText(const QString& text) {
    texts_->setEmptyText(text);
}

} // namespace orv
