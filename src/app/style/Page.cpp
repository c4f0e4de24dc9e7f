#include "Page.h"

#include <QScrollArea>

namespace orv {

QScrollArea* makePage(QWidget* content, QWidget* parent) {
    auto* page = new QScrollArea(parent);
    page->setFrameShape(QFrame::NoFrame);
    page->setWidgetResizable(true);
    page->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    page->setWidget(content);
    return page;
}

} // namespace orv
