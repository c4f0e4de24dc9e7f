#pragma once

#include "EngineDescriptor.h"

#include <QAbstractButton>
#include <QIcon>

namespace orv {

/// One engine of the list: its picture, its name and a line about it. One row of a list is chosen;
/// the arrow keys go from row to row.
class EngineRow : public QAbstractButton {
    Q_OBJECT

  public:
    explicit EngineRow(const EngineDescriptor& engine, QWidget* parent = nullptr);

    const QString& engineId() const { return id_; }

    void setTexts(const QString& name, const QString& detail);

    QSize sizeHint() const override;

    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    const QString id_;
    const QIcon icon_;
    QString detail_;
};

} // namespace orv
