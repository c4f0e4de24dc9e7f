#include "VRChatMessage.h"

#include "Graphemes.h"
#include "Result.h"
#include "WellFormedText.h"

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

QString wholeMessage(const Result& result, std::int64_t sendMode) {
    const auto& [original, translation] = result;
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
QByteArray oscText(const QString& text) {
    return wellFormedText(text).replace(QChar::Null, QChar::ReplacementCharacter).toUtf8();
}

/// OSC strings end with one to four NUL, at a multiple of four bytes.
void appendOscString(QByteArray& packet, const QByteArray& text) {
    packet += text;
    packet.append(4 - packet.size() % 4, '\0');
}

} // namespace

QString vrchatMessage(const Result& result, std::int64_t sendMode) {
    return firstCharacters(wholeMessage(result, sendMode), chatboxCharacters);
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
