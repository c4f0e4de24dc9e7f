#include "VMixWarningBanner.h"

#include "L10n.h"
#include "PanelParts.h"
#include "TranslationSettings.h"
#include "VmixTracking.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int triangleSize = 24;

} // namespace

VMixWarningBanner::VMixWarningBanner(TranslationSettings& settings, VmixTracking& tracking,
                                     L10n& l10n, QWidget* parent)
    : QFrame(parent)
    , settings_(settings)
    , l10n_(l10n)
    , disable_(makeButton(this))
    , later_(makeButton(this))
    , off_(makeButton(this)) {
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    auto* message = new QHBoxLayout;
    message->setSpacing(panelSpacing);
    message->addWidget(makeTriangle(), 0, Qt::AlignTop);
    message->addLayout(makeTexts(), 1);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(panelSpacing);
    buttons->addStretch(1);
    for (QPushButton* button : {disable_, later_, off_}) {
        buttons->addWidget(button);
    }
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(panelSpacing);
    layout->addLayout(message);
    layout->addLayout(buttons);
    connect(disable_, &QPushButton::clicked, this, [&tracking] { tracking.disableVmix(); });
    connect(later_, &QPushButton::clicked, this, [&tracking] { tracking.vmixBannerSnooze(); });
    connect(off_, &QPushButton::clicked, this, [&tracking] { tracking.turnOffWarnings(); });
    connect(&settings_, &TranslationSettings::changed, this, [this](const QString& key) {
        if (key == u"vmixShowWarningBanner") {
            follow();
        }
    });
    connect(&l10n_, &L10n::currentChanged, this, &VMixWarningBanner::translate);
    translate();
    setVisible(settings_.vmixShowWarningBanner.get());
}

QLabel* VMixWarningBanner::makeTriangle() {
    auto* triangle = new QLabel(this);
    triangle->setPixmap(panelIcon(u"warning"_s).pixmap(triangleSize));
    return triangle;
}

QVBoxLayout* VMixWarningBanner::makeTexts() {
    title_ = makeHeading(this);
    detail_ = new QLabel(this);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    for (QLabel* label : {title_, detail_}) {
        label->setWordWrap(true);
        label->setForegroundRole(QPalette::ToolTipText);
        texts->addWidget(label);
    }
    return texts;
}

void VMixWarningBanner::follow() {
    const bool shown = settings_.vmixShowWarningBanner.get();
    if (shown == !isHidden()) {
        return;
    }
    setVisible(shown);
    if (shown) {
        QAccessibleEvent event(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

void VMixWarningBanner::translate() {
    title_->setText(l10n_.platformText(u"vmix.warn.title"_s));
    detail_->setText(l10n_.platformText(u"vmix.warn.detail"_s));
    disable_->setText(l10n_.platformText(u"vmix.warn.disable"_s));
    later_->setText(l10n_.platformText(u"vmix.warn.snooze"_s));
    off_->setText(l10n_.platformText(u"vmix.warn.off"_s));
    setAccessibleName(title_->text());
    setAccessibleDescription(detail_->text());
}

} // namespace orv
