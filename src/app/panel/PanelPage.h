#pragma once

#include <QScrollArea>

namespace orv {

/// The scroll area round the panel's sections: asks for as much height as they need, and scrolls
/// them where the screen is too low for that.
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
