#pragma once

#include "Bindings.h"
#include "FileJobs.h"
#include "SettingsActions.h"
#include "SettingsEnvironment.h"

#include <QWidget>

class QStackedWidget;

namespace orv {

class SettingsTabBar;

/// The content of the settings window: six tabs. A tab is made when it is first looked at. Main
/// thread only.
class SettingsView : public QWidget {
    Q_OBJECT

  public:
    explicit SettingsView(SettingsEnvironment environment, QWidget* parent = nullptr);
    ~SettingsView() override;

    /// The window's title in the language of the interface.
    QString title() const;

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    TabContext context() const;
    void showTab(int index);

    const SettingsEnvironment environment_;
    FileJobs files_;
    std::unique_ptr<Bindings> bindings_;
    std::unique_ptr<SettingsActions> actions_;
    SettingsTabBar* tabs_;
    QStackedWidget* pages_;
};

} // namespace orv
