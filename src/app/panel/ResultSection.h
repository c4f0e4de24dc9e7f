#pragma once

#include "Card.h"
#include "PanelState.h"

namespace orv {

class ReadingText;

/// The panel's card with the latest result, and above it an error. It keeps its height whatever it
/// shows: what is longer scrolls.
class ResultSection : public Card {
    Q_OBJECT

  public:
    explicit ResultSection(QWidget* parent = nullptr);

    /// Shows an error in full; anything else is left to the panel's header.
    void setStatus(const StatusLine& status);

    void setResult(const QString& original, const QString& translation);

    /// What stands in place of a result while there is none.
    void setEmptyText(const QString& text);

  private:
    ReadingText* texts_;
};

} // namespace orv
