#include "Version.h"

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <vector>

namespace orv {

namespace {

/// Digits with at most a sign in front, within 64 bits; no spaces, no digits of other scripts.
std::optional<std::int64_t> wholeNumber(QStringView piece) {
    QByteArray text = piece.toUtf8();
    if (text.startsWith('+') && !text.startsWith("+-")) {
        text.remove(0, 1);
    }
    std::int64_t number = 0;
    const char* end = text.constData() + text.size();
    const auto [rest, error] = std::from_chars(text.constData(), end, number);
    return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

std::vector<std::int64_t> numbers(QStringView version) {
    std::vector<std::int64_t> found;
    for (const QStringView piece : version.split(u'.', Qt::SkipEmptyParts)) {
        if (const auto number = wholeNumber(piece)) {
            found.push_back(*number);
        }
    }
    return found;
}

} // namespace

bool isNewerVersion(QStringView candidate, QStringView than) {
    std::vector<std::int64_t> ours = numbers(candidate);
    std::vector<std::int64_t> theirs = numbers(than);
    const std::size_t length = std::max(ours.size(), theirs.size());
    ours.resize(length);
    theirs.resize(length);
    return ours > theirs;
}

} // namespace orv
