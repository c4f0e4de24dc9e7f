#include "OverlayPage.h"

#include <QJsonDocument>

namespace orv {

namespace {

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
let shown = )";

constexpr char afterStyle[] = R"(;

// An assignment of what is no colour changes nothing, so that each goes after one of what holds
// without a declaration.
function follow(style) {
  if (!style || Object.keys(shown).every(name => shown[name] === style[name])) {
    return;
  }
  shown = style;
  box.style.background = style.background;
  box.style.border = "none";
  box.style.border = style.border || "none";
  for (const line of [orig, trans]) {
    line.style.color = "inherit";
    line.style.color = style.color || "inherit";
  }
}

function fade() {
  if (Date.now() - lastChange > 8000) {
    box.classList.remove("show");
  }
}

let polling = false;

// One poll at a time, so that no answer comes after that of a later poll. The words fade also when
// nobody answers any more.
async function poll() {
  fade();
  if (polling) {
    return;
  }
  polling = true;
  const patience = new AbortController();
  const limit = setTimeout(() => patience.abort(), 3000);
  try {
    const answer = await fetch("/text", { cache: "no-store", signal: patience.signal });
    const result = await answer.json();
    follow(result.style);
    orig.style.display = result.showOriginal === true ? "block" : "none";
    if (result.ts !== lastTs) {
      lastTs = result.ts;
      lastChange = Date.now();
      orig.textContent = result.original || "";
      trans.textContent = result.translation || "";
      if (result.original || result.translation) {
        box.classList.add("show");
      }
    }
  } catch (error) {
    // The server may be away for a while; the next poll asks again.
  } finally {
    clearTimeout(limit);
    polling = false;
  }
}

poll();
setInterval(poll, 300);
</script>
</body>
</html>
)";

} // namespace

QByteArray overlayPage(const OverlayAppearance& appearance) {
    constexpr qsizetype valueBytes = 512;
    const OverlayStyle style = overlayStyle(appearance);
    QByteArray page;
    page.reserve(static_cast<qsizetype>(sizeof(beforeBackground) + sizeof(afterBorder) +
                                        sizeof(betweenTextColors) + sizeof(afterTextColors) +
                                        sizeof(afterStyle)) +
                 valueBytes);
    page.append(beforeBackground);
    page.append(style.background);
    page.append(';');
    if (!style.border.isEmpty()) {
        page.append("border:");
        page.append(style.border);
        page.append(';');
    }
    page.append(afterBorder);
    page.append(style.color);
    page.append(betweenTextColors);
    page.append(style.color);
    page.append(afterTextColors);
    page.append(QJsonDocument(style.toJson()).toJson(QJsonDocument::Compact));
    page.append(afterStyle);
    return page;
}

} // namespace orv
