#include "HttpResponse.h"

namespace orv {

QByteArray HttpResponse::bytes() const {
    constexpr qsizetype headBytes = 256;
    QByteArray answer;
    answer.reserve(headBytes + body.size());
    answer.append("HTTP/1.1 200 OK\r\n"
                  "Content-Type: ");
    answer.append(contentType);
    answer.append("\r\nContent-Length: ");
    answer.append(QByteArray::number(body.size()));
    answer.append("\r\nAccess-Control-Allow-Origin: *\r\n"
                  "Cache-Control: no-store\r\n"
                  "Connection: close\r\n\r\n");
    answer.append(body);
    return answer;
}

} // namespace orv
