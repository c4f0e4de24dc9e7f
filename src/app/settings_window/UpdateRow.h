#pragma once

#include "UpdateControl.h"

#include <QWidget>

class QPushButton;

namespace orv {

class Bindings;
class ToneLabel;

/// The row that checks for a newer release: a button, what came of it, and the way to the release.
class UpdateRow : public QWidget {
    Q_OBJECT

  public:
    UpdateRow(UpdateControl& updates, Bindings& bindings, QWidget* parent = nullptr);

  private:
    enum class State { Unknown, Checking, UpToDate, Failed, NoSource };

    void check();
    static State stateAfter(UpdateOutcome outcome);
    void refresh();

    UpdateControl& updates_;
    Bindings& bindings_;
    State state_ = State::Unknown;
    ToneLabel* result_;
    QPushButton* check_;
    QPushButton* download_;
};

} // namespace orv
