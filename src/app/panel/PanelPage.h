#pragma once

#include <QScrollArea>

namespace orv {

/// Scrolls the panel's sections where the screen is too low for them, and asks for as much height
/// as they want where it is not.
class PanelPage : public QScrollArea {
    Q_OBJECT

  public:
    PanelPage(QWidget* content, QWidget* parent = nullptr);

    bool hasHeightForWidth() const override { return true; }

    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace orv
