#include "PanelPage.h"

#include <QEvent>
#include <QLayout>

namespace orv {

namespace {

/// Still useful with so little room, in lines of text.
constexpr int fewestLines = 8;

} // namespace

PanelPage::PanelPage(QWidget* content, QWidget* parent)
    : QScrollArea(parent) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setWidget(content);
    content->installEventFilter(this);
}

int PanelPage::heightForWidth(int width) const {
    const QLayout* sections = widget()->layout();
    return sections->hasHeightForWidth() ? sections->totalHeightForWidth(width)
                                         : sections->totalSizeHint().height();
}

QSize PanelPage::sizeHint() const {
    const int width = widget()->sizeHint().width();
    return {width, heightForWidth(width)};
}

QSize PanelPage::minimumSizeHint() const {
    return {widget()->minimumSizeHint().width(), fontMetrics().lineSpacing() * fewestLines};
}

bool PanelPage::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        updateGeometry();
    }
    return QScrollArea::eventFilter(watched, event);
}

} // namespace orv
