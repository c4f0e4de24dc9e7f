#include "ResultSection.h"

#include "ReadingText.h"
#include "ThreadChecks.h"

#include <QVBoxLayout>

namespace orv {

namespace {

/// Room for the latest result, in lines of text.
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
    , texts_(new ResultTexts(this)) {
    rows()->addWidget(texts_, 1);
}

void ResultSection::setStatus(const StatusLine& status) {
    ORV_ON_MAIN();
    const bool failed = status.tone == Tone::Error;
    texts_->setRemark(failed ? status.headline : QString(), Tone::Error);
}

void ResultSection::setResult(const QString& original, const QString& translation) {
    ORV_ON_MAIN();
    texts_->setTexts(original, translation);
}

void ResultSection::setEmptyText(const QString& text) {
    ORV_ON_MAIN();
    texts_->setEmptyText(text);
}

} // namespace orv
