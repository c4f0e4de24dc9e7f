#pragma once

#include "SubtitleAppearance.h"

#include <QString>
#include <QWidget>

namespace orv {

/// A preview of the subtitles, over a picture that is light at one side and dark at the other,
/// since they may be shown on anything.
class OverlayPreview : public QWidget {
    Q_OBJECT

  public:
    explicit OverlayPreview(QWidget* parent = nullptr);

    void setAppearance(const SubtitleAppearance& appearance);

    /// `original` is the smaller line above; empty for none.
    void setTexts(const QString& original, const QString& translation);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void paintStage(QPainter& painter) const;

    SubtitleAppearance appearance_;
    QString original_;
    QString translation_;
};

} // namespace orv
