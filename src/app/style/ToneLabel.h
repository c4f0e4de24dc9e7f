#pragma once

#include "Theme.h"

#include <QLabel>

namespace orv {

/// A label whose colour says how its text is meant. It breaks its lines, shows plain text only, and
/// follows a change of theme.
class ToneLabel : public QLabel {
    Q_OBJECT

  public:
    explicit ToneLabel(QWidget* parent = nullptr, Tone tone = Tone::Plain);

    void setTone(Tone tone);

    Tone tone() const { return tone_; }

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void applyTone();

    Tone tone_;
};

} // namespace orv
