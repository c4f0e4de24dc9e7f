#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringDecoder>

#include <optional>

namespace orv {

/// A converter that turns what the backend prints, read in arbitrary pieces, into lines of the
/// program's own log. A character whose bytes arrive in two pieces is kept whole. Bytes that are
/// not UTF-8 become replacement characters.
class BackendEcho {
  public:
    /// "Backend:" and the text of `bytes` without the line feed at its end; nothing when there is
    /// no text.
    std::optional<QString> lineFor(QByteArrayView bytes);

  private:
    QStringDecoder decoder_{QStringDecoder::Utf8};
};

} // namespace orv
