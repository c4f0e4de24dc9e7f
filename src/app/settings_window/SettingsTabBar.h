#pragma once

#include <QTabBar>

namespace orv {

/// A tab bar that shows each tab's symbol over its name.
class SettingsTabBar : public QTabBar {
    Q_OBJECT

  public:
    explicit SettingsTabBar(QWidget* parent = nullptr);

  protected:
    QSize tabSizeHint(int index) const override;
    QSize minimumTabSizeHint(int index) const override;
    void paintEvent(QPaintEvent* event) override;
};

} // namespace orv
