#pragma once

#include <QWidget>

namespace orv {

/// A triangle in the colour of what is wrong, beside the text of a warning.
class WarningMark : public QWidget {
    Q_OBJECT

  public:
    explicit WarningMark(QWidget* parent);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace orv
