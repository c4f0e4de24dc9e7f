#pragma once

#include "PanelState.h"

#include <QWidget>

class QLabel;
class QPushButton;

namespace orv {

class ElidedLabel;

/// The status line, a notice to the user, and the latest result.
class ResultSection : public QWidget {
    Q_OBJECT

  public:
    explicit ResultSection(QWidget* parent = nullptr);

    void setStatus(const StatusLine& status);
    void setResult(const QString& original, const QString& translation);

    /// Shows `text` until the user closes it with the button called `closeText`. Another notice
    /// takes its place.
    void showNotice(const QString& text, const QString& closeText);

  private:
    QWidget* makeNotice();
    QWidget* makeTexts();

    QLabel* headline_;
    ElidedLabel* detail_;
    QLabel* noticeText_;
    QPushButton* closeNotice_;
    QWidget* notice_;
    QLabel* original_;
    QLabel* translation_;
};

} // namespace orv
