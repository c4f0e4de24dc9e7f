#include "Symbols.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>
#include <QSvgRenderer>

// Outside the namespace, as the macro demands. Static libraries do not register resources alone.
static void registerStyleIcons() {
    Q_INIT_RESOURCE(style);
}

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Renders an SVG file in whatever size is asked for. What was rendered is kept: reading the files
/// again for each painting of a window took most of its time.
class SymbolEngine : public QIconEngine {
  public:
    explicit SymbolEngine(QString path)
        : path_(std::move(path)) {}

    void paint(QPainter* painter, const QRect& area, QIcon::Mode /*mode*/,
               QIcon::State /*state*/) override {
        QSvgRenderer(path_).render(painter, QRectF(area));
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        const QString key =
            path_ % u' ' % QString::number(size.width()) % u'x' % QString::number(size.height());
        QPixmap pixmap;
        if (!QPixmapCache::find(key, &pixmap)) {
            pixmap = QPixmap(size);
            pixmap.fill(Qt::transparent);
            QPainter painter(&pixmap);
            paint(&painter, QRect(QPoint(), size), mode, state);
            QPixmapCache::insert(key, pixmap);
        }
        return pixmap;
    }

    QIconEngine* clone() const override { return new SymbolEngine(path_); }

  private:
    QString path_;
};

QIcon pictureAt(const QString& name) {
    registerStyleIcons();
    return QIcon(new SymbolEngine(u":/orvane/style/" % name % u".svg"));
}

} // namespace

QIcon symbol(const QString& name) {
    QIcon icon = pictureAt(name);
    icon.setIsMask(true);
    return icon;
}

QIcon appPicture() {
    return pictureAt(u"app"_s);
}

} // namespace orv
