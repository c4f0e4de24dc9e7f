#pragma once

#include "DesktopAppearance.h"
#include "Theme.h"

#include <QProxyStyle>

namespace orv {

/// The application's style: draws every control of the program in the colours of a theme: buttons,
/// switches (check boxes), radio buttons, fields, lists, sliders, tabs, scroll bars, meters, menus,
/// tool tips and the ring that shows the focus. Widgets need no colours and no style sheets of
/// their own.
///
/// The theme is light or dark as the desktop's scheme says; without one, as its palette is.
class OrvaneStyle : public QProxyStyle {
    Q_OBJECT

  public:
    OrvaneStyle();

    const Theme& theme() const { return theme_; }

    /// Takes effect on screen with the application's next palette.
    void setScheme(ColourScheme scheme) { scheme_ = scheme; }

    void polish(QPalette& palette) override;
    void polish(QWidget* widget) override;
    using QProxyStyle::polish;

    QIcon standardIcon(StandardPixmap standard, const QStyleOption* option,
                       const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option,
                         const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;

  private:
    bool drawOwnPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                          const QWidget* widget) const;
    bool drawOwnControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                        const QWidget* widget) const;

    Theme theme_ = Theme::light();
    ColourScheme scheme_ = ColourScheme::NoPreference;
};

} // namespace orv
