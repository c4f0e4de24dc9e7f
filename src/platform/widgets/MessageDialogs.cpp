#include "MessageDialogs.h"

#include "SvgIcon.h"
#include "ThreadChecks.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include <utility>

// Outside the namespace, as the macro demands. Static libraries do not register resources alone.
static void registerAlertIcons() {
    Q_INIT_RESOURCE(alerts);
}

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int iconSide = 48;

void setIcon(QMessageBox& box, const Alert& alert) {
    box.setIcon(alert.style == AlertStyle::Warning ? QMessageBox::Warning
                                                   : QMessageBox::Information);
    if (alert.icon == AlertIcon::Update) {
        registerAlertIcons();
        box.setIconPixmap(svgIcon(u":/orvane/alerts/arrow_down_circle_fill.svg"_s)
                              .pixmap(QSize(iconSide, iconSide), box.devicePixelRatioF()));
    }
}

/// Alerts show what came over the network, which must not bring a layout of its own.
void setTexts(QMessageBox& box, const Alert& alert) {
    box.setWindowTitle(alert.title);
    box.setTextFormat(Qt::PlainText);
    box.setText(alert.title);
    box.setInformativeText(alert.message);
    for (QLabel* label : box.findChildren<QLabel*>()) {
        label->setTextFormat(Qt::PlainText);
    }
}

} // namespace

MessageDialogs::~MessageDialogs() {
    for (const QPointer<QMessageBox>& box : std::as_const(open_)) {
        if (box) {
            box->disconnect();
            delete box;
        }
    }
}

void MessageDialogs::showAlert(const Alert& alert, Answer<int> done) {
    ORV_ON_MAIN();
    Q_ASSERT(!alert.buttons.isEmpty());
    auto* box = new QMessageBox;
    open_.removeIf([](const QPointer<QMessageBox>& other) { return other.isNull(); });
    open_.append(box);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowFlag(Qt::WindowStaysOnTopHint);
    box->setWindowModality(Qt::ApplicationModal);
    setIcon(*box, alert);
    setTexts(*box, alert);
    QList<QAbstractButton*> buttons;
    for (const QString& text : alert.buttons) {
        // Equal roles keep the given order on every desktop.
        QPushButton* button = box->addButton(text, QMessageBox::ActionRole);
        button->setAutoDefault(buttons.isEmpty());
        buttons.append(button);
    }
    box->setDefaultButton(qobject_cast<QPushButton*>(buttons.first()));
    box->setEscapeButton(buttons.last());
    if (done) {
        QObject::connect(box, &QMessageBox::finished, box,
                         [box, buttons, done = std::move(done)](int) {
                             const auto chosen = buttons.indexOf(box->clickedButton());
                             done(static_cast<int>(chosen < 0 ? buttons.size() - 1 : chosen));
                         });
    }
    box->show();
    box->raise();
    box->activateWindow();
}

} // namespace orv
