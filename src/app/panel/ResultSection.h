#pragma once

#include "PanelState.h"
#include "Pieces.h"

namespace orv {

class ElidedLabel;
class ReadingText;
class ToneLabel;

/// The latest result, and below it what there is to say about the run.
class ResultSection : public Card {
    Q_OBJECT

  public:
    explicit ResultSection(QWidget* parent = nullptr);

    /// Shows an error in full, anything else by its detail only.
    void setStatus(const StatusLine& status);

    void setResult(const QString& original, const QString& translation);

    /// What stands in place of a result while there is none.
    void setEmptyText(const QString& text);

  private:
    ReadingText* texts_;
    ToneLabel* error_;
    ElidedLabel* detail_;
};

} // namespace orv
