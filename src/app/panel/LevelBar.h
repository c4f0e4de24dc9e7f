#pragma once

#include <QProgressBar>

namespace orv {

/// The level meter: a bar for the level and a mark for the peak, both 0..1.
class LevelBar : public QProgressBar {
    Q_OBJECT

  public:
    explicit LevelBar(QWidget* parent = nullptr);

    void setLevels(float level, float peak);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    int peak_ = 0; ///< Percent.
};

} // namespace orv
