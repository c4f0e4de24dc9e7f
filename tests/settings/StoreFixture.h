#pragma once

#include "DefaultsStore.h"
#include "LogCapture.h"
#include "SerialQueue.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <sys/types.h>

namespace orv::test {

/// A store in a folder of its own, which can be closed and opened again as a next start of the
/// program would.
class StoreFixture : public ::testing::Test {
  protected:
    /// Folder and file do not exist at first.
    QString folder() const { return home_.filePath(QStringLiteral("config/orvane")); }

    QString file() const { return folder() + QStringLiteral("/defaults.json"); }

    QString corruptFile() const { return file() + QStringLiteral(".corrupt"); }

    /// Closes the store that is open and opens the file anew.
    DefaultsStore& open(DefaultsStore::Timings timings = {});

    void close() { store_.reset(); }

    /// Puts a file in place before the store is opened.
    void place(const QByteArray& content);
    QByteArray content() const;
    QJsonObject json() const;  ///< What is in the file; the test fails if it is no JSON object.
    QStringList names() const; ///< Every file in the folder, sorted.

    LogCapture log_;
    QTemporaryDir home_;
    SerialQueue disk_{QStringLiteral("test.disk")};
    std::unique_ptr<DefaultsStore> store_;
};

QByteArray readAll(const QString& path);
void writeAll(const QString& path, const QByteArray& content);

/// The file's permission bits, for example 0600.
unsigned modeOf(const QString& path);

/// Takes the rights of root away while it lives, when the tests run as root: otherwise no folder
/// would be read-only. `folder` and what is in it is handed to that user.
class OrdinaryUser {
  public:
    explicit OrdinaryUser(const QString& folder);
    ~OrdinaryUser();
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

  private:
    uid_t before_;
};

/// A disk with room for no file longer than `bytes` while it lives: a write beyond that fails the
/// way it does on a full disk, after the bytes that still fit have been written.
class FullDisk {
  public:
    explicit FullDisk(qint64 bytes);
    ~FullDisk();
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
};

} // namespace orv::test
