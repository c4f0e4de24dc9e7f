#include "SvgIcon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace orv {

QIcon svgIcon(const QString& path) {
    QSvgRenderer renderer(path);
    QIcon icon;
    for (const int side : {16, 22, 24, 32, 48, 64, 128}) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace orv
