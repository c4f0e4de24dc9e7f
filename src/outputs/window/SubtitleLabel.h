#pragma once

#include "SubtitleText.h"

#include <QColor>
#include <QLabel>

namespace orv {

/// One line of the subtitle window, laid out beforehand. A label also to assistive programs.
class SubtitleLabel : public QLabel {
    Q_OBJECT

  public:
    explicit SubtitleLabel(QWidget* parent);

    /// Shows `text`, which is as wide as the label.
    void setSubtitle(SubtitleText text);

    void setColor(const QColor& color);

    const SubtitleText& subtitle() const { return subtitle_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    SubtitleText subtitle_;
    QColor color_;
};

} // namespace orv
