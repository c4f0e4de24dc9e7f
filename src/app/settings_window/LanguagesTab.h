#pragma once

#include "SettingsEnvironment.h"

#include <QWidget>

class QLabel;
class QLineEdit;
class QListView;
class QSortFilterProxyModel;

namespace orv {

/// All spoken languages in a grid, with a field to find one.
class LanguagesTab : public QWidget {
    Q_OBJECT

  public:
    explicit LanguagesTab(const TabContext& context, QWidget* parent = nullptr);

  private:
    void translate();
    void showCount();

    Bindings& bindings_;
    QLabel* heading_;
    QLabel* count_;
    QLineEdit* search_;
    QSortFilterProxyModel* shown_;
    QListView* grid_;
    QLabel* facts_;
};

} // namespace orv
