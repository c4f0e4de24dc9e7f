#pragma once

#include "ToneLabel.h"

namespace orv {

/// One line of plain text that ends in dots where it does not fit; the whole of it is shown by the
/// mouse and told to assistive programs.
class ElidedLabel : public ToneLabel {
    Q_OBJECT

  public:
    explicit ElidedLabel(QWidget* parent = nullptr, Tone tone = Tone::Plain);

    void setText(const QString& text);

    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace orv
