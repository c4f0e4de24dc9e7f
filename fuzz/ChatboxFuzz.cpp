// Whatever was said, the chatbox gets a whole number of characters, no more than it shows, in valid
// UTF-8. The first bytes choose mode and sound; the rest is the source text, a NUL, the
// translation.

#include "Graphemes.h"
#include "Result.h"
#include "VRChatMessage.h"

#include <QStringDecoder>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

using namespace orv;

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// Two bytes to a UTF-16 unit, so that halves of surrogate pairs come up too; or as UTF-8.
QString textFrom(const QByteArray& bytes, bool utf16) {
    if (!utf16) {
        return QString::fromUtf8(bytes);
    }
    QString text(bytes.size() / 2, QChar());
    std::memcpy(text.data(), bytes.constData(), static_cast<std::size_t>(text.size()) * 2);
    return text;
}

qsizetype characters(QStringView text) {
    qsizetype count = 0;
    qsizetype last = 0;
    Graphemes characters(text);
    for (qsizetype end = characters.next(); end >= 0; end = characters.next()) {
        require(end > last && end <= text.size());
        // Never between the halves of a pair.
        require(end == text.size() || !text[end - 1].isHighSurrogate() ||
                !text[end].isLowSurrogate());
        last = end;
        ++count;
    }
    require(last == text.size());
    return count;
}

/// Whether `message` ends where a character of `whole` ends, and is not shorter than it must be.
void requireWholeCharacters(const QString& message, const QString& whole) {
    require(whole.startsWith(message));
    require(characters(message) <= chatboxCharacters);
    if (message.size() < whole.size()) {
        Graphemes characters(whole);
        qsizetype end = 0;
        for (qsizetype i = 0; i < chatboxCharacters; ++i) {
            end = characters.next();
        }
        require(message.size() == end);
    }
}

void requirePacket(const QString& message, bool playSound) {
    const QByteArray packet = chatboxPacket(message, playSound);
    require(packet.size() % 4 == 0);
    const QByteArray head =
        QByteArray("/chatbox/input\0\0,sT", 19) + (playSound ? 'T' : 'F') + QByteArray(4, '\0');
    require(packet.startsWith(head));
    const QByteArray text = packet.sliced(head.size());
    const qsizetype end = text.indexOf('\0');
    require(end >= 0 && text.size() - end <= 4);
    require(text.sliced(end) == QByteArray(text.size() - end, '\0'));
    // A byte order mark at the front is a character like any other: the decoder must keep it.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    const QString decoded = decoder.decode(text.first(end));
    require(!decoder.hasError());
    require(decoded.size() == message.size());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const std::int64_t mode = data[0] % 4;
    const bool playSound = (data[1] & 1U) != 0;
    const bool utf16 = (data[1] & 2U) != 0;
    const QByteArray rest(reinterpret_cast<const char*>(data + 2),
                          static_cast<qsizetype>(size - 2));
    const qsizetype split = rest.indexOf(utf16 ? '\x1F' : '\0');
    const QString original = textFrom(split < 0 ? rest : rest.first(split), utf16);
    const QString translation = split < 0 ? QString() : textFrom(rest.sliced(split + 1), utf16);

    const QString message = vrchatMessage({original, translation}, mode);
    const QString& shown = translation.isEmpty() ? original : translation;
    const bool both = mode > 1 && !original.isEmpty() && original != shown;
    const QString bothTexts = original + u'\n' + translation;
    const QString& one = mode == 0 || (mode > 1 && !original.isEmpty()) ? original : shown;
    requireWholeCharacters(message, both ? bothTexts : one);
    requirePacket(message, playSound);
    return 0;
}
