#include "MessageDialogs.h"

#include <QMessageBox>
#include <QPushButton>

#include <utility>

namespace orv {

MessageDialogs::~MessageDialogs() {
    for (const QPointer<QMessageBox>& box : std::as_const(open_)) {
        if (box) {
            box->disconnect();
            delete box;
        }
    }
}

void MessageDialogs::showAlert(const Alert& alert, std::function<void(int chosen)> done) {
    Q_ASSERT(!alert.buttons.isEmpty());
    auto* box = new QMessageBox;
    open_.removeIf([](const QPointer<QMessageBox>& other) { return other.isNull(); });
    open_.append(box);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowFlag(Qt::WindowStaysOnTopHint);
    box->setWindowModality(Qt::ApplicationModal);
    box->setIcon(alert.style == AlertStyle::Warning ? QMessageBox::Warning
                                                    : QMessageBox::Information);
    box->setWindowTitle(alert.title);
    box->setText(alert.title);
    box->setInformativeText(alert.message);
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
