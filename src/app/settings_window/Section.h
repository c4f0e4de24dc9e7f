#pragma once

#include <QString>

#include <functional>

namespace orv {

class Bindings;
class Card;
class CardColumn;

/// What comes before a control's own name; several sections have a host and a port.
using SectionName = std::function<QString()>;

/// A card headed by the text of `title`, and what its controls are told apart by.
struct Section {
    Card& card;
    SectionName name;
};

Section addSection(CardColumn& column, Bindings& bindings, const QString& title);

} // namespace orv
