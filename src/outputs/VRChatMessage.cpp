#include "VRChatMessage.h"

#include "Graphemes.h"

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr std::int64_t sourceTextOnly = 0;
constexpr std::int64_t translationOnly = 1;

QString bothTexts(const QString& original, const QString& shown, const QString& translation) {
    if (original.isEmpty()) {
        return shown;
    }
    if (original == shown) {
        return original;
    }
    return original + u'\n' + translation;
}

QString wholeMessage(const QString& original, const QString& translation, std::int64_t sendMode) {
    const QString& shown = translation.isEmpty() ? original : translation;
    switch (sendMode) {
    case sourceTextOnly:
        return original;
    case translationOnly:
        return shown;
    default:
        return bothTexts(original, shown, translation);
    }
}

/// Valid UTF-8 without a NUL.
QByteArray oscText(QString text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool pairFollows =
            text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if (pairFollows) {
            ++i;
        } else if (text[i].isSurrogate() || text[i].isNull()) {
            text[i] = QChar::ReplacementCharacter;
        }
    }
    return text.toUtf8();
}

/// OSC strings end with one to four NUL, at a multiple of four bytes.
void appendOscString(QByteArray& packet, const QByteArray& text) {
    packet += text;
    packet.append(4 - packet.size() % 4, '\0');
}

} // namespace

QString vrchatMessage(const QString& original, const QString& translation, std::int64_t sendMode) {
    return firstCharacters(wholeMessage(original, translation, sendMode), chatboxCharacters);
}

QByteArray chatboxPacket(const QString& message, bool playSound) {
    QByteArray packet;
    appendOscString(packet, "/chatbox/input"_ba);
    appendOscString(packet, playSound ? ",sTT"_ba : ",sTF"_ba);
    appendOscString(packet, oscText(message));
    return packet;
}

std::uint16_t clampedPort(std::int64_t stored) {
    constexpr std::int64_t last = std::numeric_limits<std::uint16_t>::max();
    return static_cast<std::uint16_t>(std::clamp(stored, std::int64_t{0}, last));
}

} // namespace orv
