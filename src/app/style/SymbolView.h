#pragma once

#include <QIcon>
#include <QWidget>

namespace orv {

/// A widget that shows a picture or symbol (see Symbols.h); a symbol in the quieter text colour.
/// Only decoration: assistive programs do not hear of it.
class SymbolView : public QWidget {
    Q_OBJECT

  public:
    /// `side` in logical pixels.
    SymbolView(const QIcon& icon, int side, QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QIcon icon_;
};

} // namespace orv
