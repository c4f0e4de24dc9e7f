#pragma once

#include "PanelState.h"

#include <QWidget>

#include <functional>

class QLabel;

namespace orv {

class ElidedLabel;
class IconButton;

/// The head of the panel: the program's picture and name, what it is doing, and the ways to the
/// settings and out.
class PanelHeader : public QWidget {
    Q_OBJECT

  public:
    explicit PanelHeader(QWidget* parent = nullptr);

    /// `text` looks a text up by its key.
    void translate(const TextLookup& text);

    /// What the program is doing; with nothing to say, what it is for.
    void setStatus(const StatusLine& status);

  Q_SIGNALS:
    void settingsWanted();
    void quitWanted();

  private:
    void showStatus();

    QLabel* title_;
    ElidedLabel* state_;
    IconButton* settings_;
    IconButton* quit_;
    QString purpose_;
    StatusLine status_;
};

} // namespace orv
