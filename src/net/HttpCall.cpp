#include "HttpCall.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QByteArray targetOf(const QUrl& url) {
    const QByteArray target =
        url.adjusted(QUrl::RemoveScheme | QUrl::RemoveAuthority | QUrl::RemoveFragment).toEncoded();
    return target.startsWith('/') ? target : QByteArray('/' + target);
}

QByteArray authorityOf(const QUrl& url) {
    const QString host = url.host(QUrl::FullyEncoded);
    const QByteArray name = (host.contains(u':') ? QString(u'[' % host % u']') : host).toLatin1();
    return url.port() < 0 ? name : QByteArray(name + ':' + QByteArray::number(url.port()));
}

QByteArray line(const QByteArray& name, const QByteArray& value) {
    return name + ": " + value + "\r\n";
}

} // namespace

QByteArray requestBytes(const HttpCall& call, AfterAnswer afterAnswer) {
    const auto given = [&](const char* name) {
        return std::ranges::any_of(call.headers, [&](const auto& header) {
            return header.first.compare(name, Qt::CaseInsensitive) == 0;
        });
    };
    QByteArray bytes = call.body ? "POST " : "GET ";
    bytes += targetOf(call.url) + " HTTP/1.1\r\n" + line("Host", authorityOf(call.url));
    if (!given("User-Agent")) {
        bytes += line("User-Agent", "Orvane");
    }
    if (!given("Accept")) {
        bytes += line("Accept", "*/*");
    }
    for (const auto& [name, value] : call.headers) {
        bytes += line(name, value);
    }
    if (call.body) {
        bytes += line("Content-Length", QByteArray::number(call.body->size()));
    }
    if (!given("Connection")) {
        bytes += line("Connection", afterAnswer == AfterAnswer::Keep ? "keep-alive" : "close");
    }
    return bytes + "\r\n" + call.body.value_or(QByteArray());
}

} // namespace orv
