#pragma once

#include "WhisperPackages.h"

#include <QWidget>

class QLabel;
class QPushButton;

namespace orv {

class Bindings;
class ToneLabel;

/// One package that runs Whisper: how large it is, whether it is there, and a button that installs
/// or removes it, or breaks that off.
class WhisperPackageRow : public QWidget {
    Q_OBJECT

  public:
    /// The references outlive the row.
    WhisperPackageRow(QString package, WhisperPackages& packages, Bindings& bindings,
                      QWidget* parent = nullptr);

  private:
    WhisperPackage package() const;
    void refresh();
    void showAction();
    QString stateText() const;
    void act();

    const QString name_;
    WhisperPackages& packages_;
    Bindings& bindings_;
    QLabel* size_;
    ToneLabel* state_;
    QLabel* detail_;
    QPushButton* action_;
};

} // namespace orv
