#pragma once

#include "Output.h"

#include <QFile>
#include <QString>

namespace orv::test {

/// An output as somebody would add one, in a file of its own: a line for each result. Of results
/// that come faster than the file takes them it drops none; a test gives it few.
class FileOutput : public Output {
  public:
    /// Without a path nothing is wanted of it.
    explicit FileOutput(const QString& path)
        : file_(path) {}

    bool isWanted() const { return !file_.fileName().isEmpty(); }

    void take(const Result& result) override {
        if (file_.isOpen() || file_.open(QIODevice::WriteOnly | QIODevice::Unbuffered)) {
            file_.write((result.original + u'|' + result.translation + u'\n').toUtf8());
        }
    }

  private:
    QFile file_;
};

} // namespace orv::test
