#include "Section.h"

#include "Bindings.h"
#include "CardColumn.h"
#include "CardRows.h"

namespace orv {

Section addSection(CardColumn& column, Bindings& bindings, const QString& title) {
    Card& card = *column.addCard();
    addHeading(card, bindings, title);
    return {.card = card, .name = [&bindings, title] { return bindings.text(title); }};
}

} // namespace orv
