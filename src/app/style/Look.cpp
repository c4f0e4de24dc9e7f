#include "Look.h"

#include "OrvaneStyle.h"
#include "ScrollAreaAccessible.h"
#include "ThreadChecks.h"

#include <QApplication>

namespace orv {

Look::Look(DesktopAppearance& appearance)
    : appearance_(appearance)
    , style_(new OrvaneStyle) {
    QApplication::setStyle(style_);
    installScrollAreaAccessibility();
    appearance_.setHandler([this](ColourScheme scheme) {
        ORV_ON_MAIN();
        style_->setScheme(scheme);
        // Lets the style see the desktop's own palette again and turn it into the theme's.
        QApplication::setPalette(QPalette());
    });
}

Look::~Look() {
    appearance_.setHandler({});
}

} // namespace orv
