#pragma once

#include <QWidget>

namespace orv {

/// The level meter: a bar for the level and a mark for the peak, both 0..1. It is fed 30 times a
/// second and therefore paints only what differs from the last time, and nothing while hidden.
/// Assistive programs can read the level; they are not told of every change.
class LevelBar : public QWidget {
    Q_OBJECT

  public:
    explicit LevelBar(QWidget* parent = nullptr);

    void setLevels(float level, float peak);

    float level() const { return level_; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    /// What is on screen, in logical pixels from the left edge.
    struct Shown {
        int filled = 0;
        int peak = 0; ///< Left edge of the mark; below 0: no mark.
        bool hot = false;

        friend bool operator==(const Shown&, const Shown&) = default;
    };

    Shown shownFor(float level, float peak) const;
    QRect peakArea(const Shown& shown) const;

    float level_ = 0;
    float peak_ = 0;
    Shown shown_;
};

} // namespace orv
