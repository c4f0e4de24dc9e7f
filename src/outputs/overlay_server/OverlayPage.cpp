#include "OverlayPage.h"

#include "DefaultsStore.h"
#include "OverlayDefaults.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

QByteArray rgba(const QColor& color, double opacity) {
    const QColor converted = color.isValid() ? color.toRgb() : QColor(Qt::green);
    const auto component = [](double value) {
        return QByteArray::number(static_cast<int>(std::lround(value * 255)));
    };
    return "rgba(" + component(converted.redF()) + ',' + component(converted.greenF()) + ',' +
           component(converted.blueF()) + ',' + cssNumber(opacity) + ')';
}

bool parenthesesMatch(const QString& value) {
    int open = 0;
    for (const QChar character : value) {
        open += character == u'(' ? 1 : character == u')' ? -1 : 0;
        if (open < 0) {
            return false;
        }
    }
    return open == 0;
}

constexpr char beforeBackground[] = R"(<!DOCTYPE html>
<html>
<head>
<meta charset="utf-8">
<title>ORV Overlay</title>
<style>
html, body {
  margin: 0; padding: 0; width: 100%; height: 100%;
  background: transparent; overflow: hidden;
  font-family: -apple-system, BlinkMacSystemFont, "Helvetica Neue", Arial, sans-serif;
}
#wrap {
  position: fixed; left: 0; right: 0; bottom: 6vh;
  display: flex; justify-content: center;
}
#box {
  max-width: 90%; padding: 14px 24px; border-radius: 16px; box-sizing: border-box;
  text-align: center; overflow-wrap: break-word;
  background:)";

constexpr char afterBorder[] = R"(
  opacity: 0; transition: opacity .25s ease; -webkit-text-stroke: 0;
}
#box.show { opacity: 1; }
#orig {
  display: none; opacity: .7; font-size: 22px; line-height: 1.3; margin-bottom: 6px;
  color:)";

constexpr char betweenTextColors[] = R"(;
}
#trans {
  font-size: 34px; font-weight: 600; line-height: 1.3;
  color:)";

// The texts of a result only ever become text content, so that nothing in them is taken as markup.
constexpr char afterTextColors[] = R"(;
}
</style>
</head>
<body>
<div id="wrap"><div id="box"><div id="orig"></div><div id="trans"></div></div></div>
<script>
const box = document.getElementById("box");
const orig = document.getElementById("orig");
const trans = document.getElementById("trans");
let lastTs = 0;
let lastChange = Date.now();

async function poll() {
  try {
    const answer = await fetch("/text", { cache: "no-store" });
    const result = await answer.json();
    orig.style.display = result.showOriginal === true ? "block" : "none";
    if (result.ts !== lastTs) {
      lastTs = result.ts;
      lastChange = Date.now();
      orig.textContent = result.original || "";
      trans.textContent = result.translation || "";
      if (result.original || result.translation) {
        box.classList.add("show");
      }
    } else if (Date.now() - lastChange > 8000) {
      box.classList.remove("show");
    }
  } catch (error) {
    // The server may be away for a while; the next poll asks again.
  }
}

poll();
setInterval(poll, 300);
</script>
</body>
</html>
)";

} // namespace

OverlayAppearance OverlayAppearance::fromStore(const DefaultsStore& store) {
    const QString defaultText = u"#000000"_s;
    const QString defaultBorder = u"#2E7D32"_s;

    OverlayAppearance appearance;
    appearance.background = OverlayDefaults::backgroundColor(store);
    appearance.opacity = OverlayDefaults::opacityValue(store);
    appearance.textColor =
        cssColorOr(store.string(u"overlayTextColor"_s).value_or(defaultText), defaultText);
    if (OverlayDefaults::borderOn(store)) {
        appearance.borderColor = cssColorOr(
            store.string(u"overlayBorderColor"_s).value_or(defaultBorder), defaultBorder);
    }
    return appearance;
}

QString cssColorOr(const QString& value, const QString& fallback) {
    const auto mayStandInColor = [](QChar character) {
        const char16_t unit = character.unicode();
        return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
               (unit >= u'0' && unit <= u'9') || QStringView(u" #(),.%+-/").contains(character);
    };
    const bool isHarmless = std::all_of(value.begin(), value.end(), mayStandInColor);
    return isHarmless && parenthesesMatch(value) ? value : fallback;
}

QByteArray cssNumber(double value) {
    return QByteArray::number(value, 'f', QLocale::FloatingPointShortest);
}

QByteArray overlayPage(const OverlayAppearance& appearance) {
    constexpr qsizetype valueBytes = 256;
    const QByteArray textColor = appearance.textColor.toUtf8();
    QByteArray page;
    page.reserve(static_cast<qsizetype>(sizeof(beforeBackground) + sizeof(afterBorder) +
                                        sizeof(betweenTextColors) + sizeof(afterTextColors)) +
                 valueBytes);
    page.append(beforeBackground);
    page.append(rgba(appearance.background, appearance.opacity));
    page.append(';');
    if (appearance.borderColor) {
        page.append("border:3px solid ");
        page.append(appearance.borderColor->toUtf8());
        page.append(';');
    }
    page.append(afterBorder);
    page.append(textColor);
    page.append(betweenTextColors);
    page.append(textColor);
    page.append(afterTextColors);
    return page;
}

} // namespace orv
