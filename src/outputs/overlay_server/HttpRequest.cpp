#include "HttpRequest.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace orv {

namespace {

/// The first word of `text` and the start of what follows it; both empty when there is none.
std::pair<std::string_view, std::string_view> takeWord(std::string_view text) {
    const std::size_t begin = std::min(text.find_first_not_of(' '), text.size());
    const std::size_t end = std::min(text.find(' ', begin), text.size());
    return {text.substr(begin, end - begin), text.substr(end)};
}

bool equalsIgnoringCase(char byte, char lowerCase) {
    const bool isUpper = byte >= 'A' && byte <= 'Z';
    return (isUpper ? static_cast<char>(byte - 'A' + 'a') : byte) == lowerCase;
}

bool startsIgnoringCase(std::string_view line, std::string_view lowerCaseStart) {
    return line.size() >= lowerCaseStart.size() &&
           std::equal(
               lowerCaseStart.begin(), lowerCaseStart.end(), line.begin(),
               [](char lowerCase, char byte) { return equalsIgnoringCase(byte, lowerCase); });
}

bool announcesBody(std::string_view head) {
    for (std::size_t end = head.find('\n'); end != std::string_view::npos; end = head.find('\n')) {
        head.remove_prefix(end + 1);
        if (startsIgnoringCase(head, "content-length:") ||
            startsIgnoringCase(head, "transfer-encoding:")) {
            return true;
        }
    }
    return false;
}

} // namespace

QByteArray requestPath(QByteArrayView firstRead) {
    constexpr std::string_view page = "/";
    std::string_view path;
    if (firstRead.isValidUtf8()) {
        const std::string_view text(firstRead.data(), static_cast<std::size_t>(firstRead.size()));
        const std::string_view requestLine = text.substr(0, text.find("\r\n"));
        path = takeWord(takeWord(requestLine).second).first;
    }
    if (path.empty()) {
        path = page;
    }
    return {path.data(), static_cast<qsizetype>(path.size())};
}

bool isWholeRequest(QByteArrayView firstRead) {
    const std::string_view head(firstRead.data(), static_cast<std::size_t>(firstRead.size()));
    return firstRead.size() < httpFirstReadBytes && head.ends_with("\r\n\r\n") &&
           !announcesBody(head);
}

} // namespace orv
