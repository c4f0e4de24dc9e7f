#pragma once

#include "SettingsEnvironment.h"

#include <QTimer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QListView;
class QStandardItemModel;

namespace orv {

/// The tab that lists all spoken languages in a grid, with a field to find one.
class LanguagesTab : public QWidget {
    Q_OBJECT

  public:
    explicit LanguagesTab(const TabContext& context, QWidget* parent = nullptr);

  private:
    void addRows();
    void translate();
    void showCount();

    Bindings& bindings_;
    QLabel* heading_;
    QLabel* count_;
    QLineEdit* search_;
    QStandardItemModel* rows_;
    QTimer filling_; ///< Runs until all languages have their rows.
    QListView* grid_;
    QLabel* facts_;
};

} // namespace orv
