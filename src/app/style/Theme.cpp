#include "Theme.h"

#include "OrvaneStyle.h"

#include <QWidget>

namespace orv {

Theme Theme::light() {
    Theme theme;
    theme.window = QColor(0xf4f5f7);
    theme.card = QColor(0xffffff);
    theme.field = QColor(0xffffff);
    theme.cardBorder = QColor(0xe3e6eb);
    theme.control = QColor(0xffffff);
    theme.controlHover = QColor(0xf3f5f8);
    theme.controlPressed = QColor(0xe6e9ee);
    theme.controlBorder = QColor(0xc9ced7);
    theme.track = QColor(0xe7eaef);
    theme.segment = QColor(0xffffff);
    theme.switchOff = QColor(0x868e9c);
    theme.knob = QColor(0xffffff);
    theme.text = QColor(0x1b2028);
    theme.quietText = QColor(0x565e6b);
    theme.disabledText = QColor(0x8d95a2);
    theme.accent = QColor(0x2563eb);
    theme.accentHover = QColor(0x1f57d6);
    theme.accentPressed = QColor(0x1b4bbb);
    theme.onAccent = QColor(0xffffff);
    theme.accentText = QColor(0x1d4fd0);
    theme.accentSoft = QColor(0xe3ecfd);
    theme.danger = QColor(0xfdeeee);
    theme.dangerBorder = QColor(0xeec5c5);
    theme.dangerHover = QColor(0xfae0e0);
    theme.dangerPressed = QColor(0xf5d0d0);
    theme.onDanger = QColor(0xa81717);
    theme.good = QColor(0x157038);
    theme.busy = QColor(0x8a4308);
    theme.error = QColor(0xb81c1c);
    theme.notice = QColor(0xfff5dc);
    theme.noticeBorder = QColor(0xefd9a0);
    theme.tip = QColor(0x272c35);
    theme.onTip = QColor(0xf4f5f7);
    return theme;
}

Theme Theme::darkened() {
    Theme theme;
    theme.dark = true;
    theme.window = QColor(0x17191d);
    theme.card = QColor(0x202329);
    theme.field = QColor(0x17191d);
    theme.cardBorder = QColor(0x2f333b);
    theme.control = QColor(0x2b2f37);
    theme.controlHover = QColor(0x343943);
    theme.controlPressed = QColor(0x262a31);
    theme.controlBorder = QColor(0x424854);
    theme.track = QColor(0x15171b);
    theme.segment = QColor(0x3a404b);
    theme.switchOff = QColor(0x6d7482);
    theme.knob = QColor(0xf4f5f7);
    theme.text = QColor(0xeceef2);
    theme.quietText = QColor(0xa7aebb);
    theme.disabledText = QColor(0x717886);
    theme.accent = QColor(0x2f69e6);
    theme.accentHover = QColor(0x2a60d6);
    theme.accentPressed = QColor(0x2452b8);
    theme.onAccent = QColor(0xffffff);
    theme.accentText = QColor(0x8fb4ff);
    theme.accentSoft = QColor(0x24375f);
    theme.danger = QColor(0x3b2326);
    theme.dangerBorder = QColor(0x5c3236);
    theme.dangerHover = QColor(0x47292c);
    theme.dangerPressed = QColor(0x331e21);
    theme.onDanger = QColor(0xffa39d);
    theme.good = QColor(0x5dd28c);
    theme.busy = QColor(0xf2bf55);
    theme.error = QColor(0xff8f88);
    theme.notice = QColor(0x37301d);
    theme.noticeBorder = QColor(0x57492a);
    theme.tip = QColor(0x3b414c);
    theme.onTip = QColor(0xf4f5f7);
    return theme;
}

QColor Theme::toneColor(Tone tone) const {
    switch (tone) {
    case Tone::Plain:
        return text;
    case Tone::Quiet:
        return quietText;
    case Tone::Accent:
        return accentText;
    case Tone::Good:
        return good;
    case Tone::Busy:
        return busy;
    case Tone::Error:
        return error;
    }
    return text;
}

QPalette Theme::palette() const {
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, field);
    palette.setColor(QPalette::AlternateBase, controlHover);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::PlaceholderText, quietText);
    palette.setColor(QPalette::Button, control);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, error);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, onAccent);
    palette.setColor(QPalette::Link, accentText);
    palette.setColor(QPalette::LinkVisited, accentText);
    palette.setColor(QPalette::ToolTipBase, tip);
    palette.setColor(QPalette::ToolTipText, onTip);
    palette.setColor(QPalette::Light, controlHover);
    palette.setColor(QPalette::Midlight, cardBorder);
    palette.setColor(QPalette::Mid, controlBorder);
    palette.setColor(QPalette::Dark, controlBorder);
    palette.setColor(QPalette::Shadow, switchOff);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::PlaceholderText}) {
        palette.setColor(QPalette::Disabled, role, disabledText);
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, track);
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, disabledText);
    return palette;
}

QList<TextPair> Theme::textPairs() const {
    return {{"text on window", text, window},
            {"text on card", text, card},
            {"text on field", text, field},
            {"text on control", text, control},
            {"text on control under the mouse", text, controlHover},
            {"text on pressed control", text, controlPressed},
            {"text on track", text, track},
            {"text on segment", text, segment},
            {"text on chosen row", text, accentSoft},
            {"text on notice", text, notice},
            {"quiet text on window", quietText, window},
            {"quiet text on card", quietText, card},
            {"quiet text on field", quietText, field},
            {"quiet text on control", quietText, control},
            {"quiet text on control under the mouse", quietText, controlHover},
            {"quiet text on track", quietText, track},
            {"text on accent", onAccent, accent},
            {"text on accent under the mouse", onAccent, accentHover},
            {"text on pressed accent", onAccent, accentPressed},
            {"accent text on window", accentText, window},
            {"accent text on card", accentText, card},
            {"text on danger", onDanger, danger},
            {"text on danger under the mouse", onDanger, dangerHover},
            {"text on pressed danger", onDanger, dangerPressed},
            {"good on window", good, window},
            {"good on card", good, card},
            {"busy on window", busy, window},
            {"busy on card", busy, card},
            {"error on window", error, window},
            {"error on card", error, card},
            {"error on notice", error, notice},
            {"busy on notice", busy, notice},
            {"text on tip", onTip, tip}};
}

const Theme& themeOf(const QWidget& widget) {
    if (const auto* style = qobject_cast<const OrvaneStyle*>(widget.style()); style != nullptr) {
        return style->theme();
    }
    static const Theme light = Theme::light();
    static const Theme dark = Theme::darkened();
    return widget.palette().color(QPalette::Window).lightness() < 128 ? dark : light;
}

QFont titleFont(const QFont& body) {
    return strongFont(largeFont(body));
}

QFont largeFont(const QFont& body) {
    QFont font = body;
    if (body.pointSizeF() > 0) {
        font.setPointSizeF(body.pointSizeF() * 1.3);
    } else {
        font.setPixelSize(body.pixelSize() * 13 / 10);
    }
    return font;
}

QFont strongFont(const QFont& body) {
    QFont font = body;
    font.setWeight(QFont::DemiBold);
    return font;
}

} // namespace orv
