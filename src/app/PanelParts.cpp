#include "PanelParts.h"

#include "SvgIcon.h"

#include <QComboBox>
#include <QFont>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

// Outside the namespace, as the macro demands. Static libraries do not register resources alone.
static void registerPanelIcons() {
    Q_INIT_RESOURCE(panel);
}

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Asks for room beside its text, and for the same height whatever signs the text holds.
class PanelButton : public QPushButton {
  public:
    using QPushButton::QPushButton;

    QSize sizeHint() const override {
        const int room = fontMetrics().horizontalAdvance(u'm');
        return {QPushButton::sizeHint().width() + room, fontMetrics().height() * 17 / 10};
    }

    QSize minimumSizeHint() const override { return sizeHint(); }
};

} // namespace

QLabel* makeHeading(QWidget* parent) {
    auto* label = new QLabel(parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

QLabel* makeHint(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}

QPushButton* makeButton(QWidget* parent) {
    return new PanelButton(parent);
}

QIcon panelIcon(const QString& name) {
    registerPanelIcons();
    return svgIcon(QString(u":/orvane/panel/" % name % u".svg"));
}

void nameField(QLabel* label, QWidget* field, const QString& text) {
    label->setText(text);
    label->setBuddy(field);
    field->setAccessibleName(text);
    if (const auto* combo = qobject_cast<QComboBox*>(field);
        combo != nullptr && combo->lineEdit() != nullptr) {
        combo->lineEdit()->setAccessibleName(text);
    }
}

} // namespace orv
