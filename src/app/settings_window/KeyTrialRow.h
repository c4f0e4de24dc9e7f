#pragma once

#include "KeyQuestion.h"
#include "KeyTrial.h"
#include "Section.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QPushButton;

namespace orv {

class AnySetting;
class Bindings;
class ToneLabel;

/// The row under a key that has the service asked whether it works, and shows the answer until what
/// was asked about changes.
class KeyTrialRow : public QWidget {
    Q_OBJECT

  public:
    /// What is asked about. What it refers to outlives the row.
    struct Subject {
        QString product; ///< Whose key it is, for people.
        QString prefix;  ///< Of the button's name behind that of the section; may be empty.
        std::function<QString()> key;
        std::function<std::vector<KeyQuestion>()> questions;
        std::vector<const AnySetting*> settings; ///< Which the questions depend on.
    };

    KeyTrialRow(Subject subject, Bindings& bindings, const SectionName& section,
                QWidget* parent = nullptr);

  private:
    enum class State { Untried, Trying, Works, Fails };

    void forget();
    void begin();
    void show(const std::optional<ServiceFault>& fault);
    void refresh();
    QString faultText() const;

    const Subject subject_;
    Bindings& bindings_;
    const SectionName section_;
    QPushButton* try_;
    ToneLabel* answer_;
    std::unique_ptr<KeyTrial> trial_;
    State state_ = State::Untried;
    ServiceFault fault_;
};

} // namespace orv
