#pragma once

#include <QColor>
#include <QIcon>
#include <QList>
#include <QWidget>

class QToolButton;

namespace orv {

/// A picture of a colour, with an edge that shows on every ground.
QIcon swatchIcon(const QColor& color, const QSize& size);

/// The colours that are offered, row by row.
QList<QColor> paletteColors();

/// The number of colours in a row of the palette.
inline constexpr int paletteColumns = 8;

/// A pop-up with colours to choose from, by mouse or with the arrow keys. Closes with the choice.
class ColorPalette : public QWidget {
    Q_OBJECT

  public:
    explicit ColorPalette(const QColor& current, QWidget* parent);

    /// Shows it below `anchor`, or above where there is no room.
    void showBelow(const QWidget& anchor);

  Q_SIGNALS:
    void chosen(const QColor& color);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QList<QToolButton*> swatches_;
};

} // namespace orv
