#include "HttpAnswer.h"

#include <algorithm>

namespace orv {

namespace {

bool isDigit(char sign) {
    return sign >= '0' && sign <= '9';
}

} // namespace

HttpAnswer::State HttpAnswer::read(QByteArrayView bytes) {
    while (state_ == State::Reading && !bytes.isEmpty()) {
        const bool isContent = part_ == Part::SizedBody || part_ == Part::BodyUntilClose;
        bytes = bytes.sliced(isContent ? takeContent(bytes) : readLine(bytes));
    }
    rest_ = rest_ || !bytes.isEmpty();
    return state_;
}

HttpAnswer::State HttpAnswer::close() {
    if (state_ == State::Reading) {
        state_ = part_ == Part::BodyUntilClose ? State::Whole : State::CutShort;
    }
    return state_;
}

qsizetype HttpAnswer::readLine(QByteArrayView bytes) {
    const qsizetype end = bytes.indexOf('\n');
    const qsizetype taken = end < 0 ? bytes.size() : end + 1;
    headSize_ += taken;
    if (headSize_ > maximumHead) {
        fail();
        return taken;
    }
    line_ += bytes.first(taken);
    if (end >= 0) {
        lineRead(QByteArrayView(line_).chopped(line_.endsWith("\r\n") ? 2 : 1));
        line_.clear();
    }
    return taken;
}

void HttpAnswer::lineRead(QByteArrayView line) {
    switch (part_) {
    case Part::Status:
        readStatus(line);
        break;
    case Part::Header:
        line.isEmpty() ? headRead() : readHeader(line);
        break;
    case Part::ChunkSize:
        readChunkSize(line);
        break;
    case Part::ChunkEnd:
        line.isEmpty() ? void(part_ = Part::ChunkSize) : fail();
        headSize_ = 0; // Any number of chunks may come.
        break;
    case Part::Trailer:
        if (line.isEmpty()) {
            state_ = State::Whole;
        }
        break;
    case Part::SizedBody:
    case Part::BodyUntilClose:
        break;
    }
}

void HttpAnswer::readStatus(QByteArrayView line) {
    // "HTTP/1.1 200 OK"; the reason may be missing.
    const bool fits = line.size() >= 12 && line.startsWith("HTTP/1.") && isDigit(line[7]) &&
                      line[8] == ' ' && std::all_of(line.begin() + 9, line.begin() + 12, isDigit) &&
                      (line.size() == 12 || line[12] == ' ');
    if (!fits) {
        fail();
        return;
    }
    status_ = line.sliced(9, 3).toInt();
    closes_ = line[7] == '0';
    part_ = Part::Header;
}

void HttpAnswer::readHeader(QByteArrayView line) {
    const qsizetype colon = line.indexOf(':');
    if (colon <= 0) {
        fail();
        return;
    }
    const QByteArray name = line.first(colon).toByteArray().toLower();
    const QByteArray text = line.sliced(colon + 1).trimmed().toByteArray();
    const QByteArray value = text.toLower();
    if (name == "transfer-encoding") {
        chunked_ = value.endsWith("chunked");
    } else if (name == "content-length") {
        bool isNumber = false;
        left_ = value.toLongLong(&isNumber);
        if (!isNumber || !std::all_of(value.begin(), value.end(), isDigit)) {
            fail();
        }
    } else if (name == "connection") {
        closes_ = closes_ || value.contains("close");
    }
    headers_.append({name, text});
}

void HttpAnswer::headRead() {
    const bool interim = status_ >= 100 && status_ < 200 && status_ != 101;
    if (interim) {
        part_ = Part::Status;
        chunked_ = false;
        left_ = -1;
        headers_.clear();
    } else if (status_ == 101 || status_ == 204 || status_ == 304 || (!chunked_ && left_ == 0)) {
        state_ = State::Whole;
    } else if (chunked_) {
        part_ = Part::ChunkSize;
    } else {
        part_ = left_ > 0 ? Part::SizedBody : Part::BodyUntilClose;
        limitContent();
    }
}

void HttpAnswer::limitContent() {
    if (largestBody_ && left_ > *largestBody_ - body_.size()) {
        state_ = State::TooLarge;
    }
}

void HttpAnswer::readChunkSize(QByteArrayView line) {
    const qsizetype extension = line.indexOf(';');
    const QByteArrayView digits = (extension < 0 ? line : line.first(extension)).trimmed();
    bool isNumber = false;
    left_ = digits.toLongLong(&isNumber, 16);
    if (!isNumber || left_ < 0) {
        fail();
    } else {
        part_ = left_ == 0 ? Part::Trailer : Part::SizedBody;
        limitContent();
    }
}

qsizetype HttpAnswer::takeContent(QByteArrayView bytes) {
    const bool untilClose = part_ == Part::BodyUntilClose;
    const auto taken = untilClose
                           ? bytes.size()
                           : static_cast<qsizetype>(std::min<std::int64_t>(bytes.size(), left_));
    if (largestBody_) {
        body_ += bytes.first(taken);
        if (body_.size() > *largestBody_) {
            state_ = State::TooLarge;
        }
    }
    if (!untilClose) {
        left_ -= taken;
        if (left_ == 0 && state_ == State::Reading) {
            contentTaken();
        }
    }
    return taken;
}

void HttpAnswer::contentTaken() {
    if (chunked_) {
        part_ = Part::ChunkEnd;
    } else {
        state_ = State::Whole;
    }
}

} // namespace orv
