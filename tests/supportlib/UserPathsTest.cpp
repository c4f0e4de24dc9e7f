#include "UserPaths.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

// Every test runs in a process of its own, so what it sets touches no other.
UserPaths pathsWith(const QByteArray& home, const QByteArray& configHome) {
    qputenv("HOME", home);
    qputenv("XDG_CONFIG_HOME", configHome);
    return UserPaths::fromEnvironment();
}

QString accountHome() {
    return QString::fromLocal8Bit(::getpwuid(::getuid())->pw_dir); // NOLINT(concurrency-mt-unsafe)
}

} // namespace

TEST(UserPaths, theRuntimeFolderIsTheUsersOwn) {
    const QTemporaryDir folder;
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder.path()));
    EXPECT_EQ(pathsWith("/home/mia", {}).runtime, folder.path());
    // Somebody else's, none at all, and no folder: what the system has made, or the settings'.
    for (const char* unusable : {"/nowhere", "/etc/passwd", "relative", ""}) {
        qputenv("XDG_RUNTIME_DIR", unusable);
        const UserPaths paths = pathsWith("/home/mia", {});
        EXPECT_TRUE(paths.runtime == paths.settingsFolder() ||
                    paths.runtime == u"/run/user/"_s + QString::number(::getuid()))
            << unusable;
    }
}

TEST(UserPaths, deriveFromHome) {
    qunsetenv("XDG_CACHE_HOME");
    const UserPaths paths = pathsWith("/home/mia", {});
    EXPECT_EQ(paths.home, u"/home/mia"_s);
    EXPECT_EQ(paths.configHome, u"/home/mia/.config"_s);
    EXPECT_EQ(paths.defaultsFile(), u"/home/mia/.config/orvane/defaults.json"_s);
    EXPECT_EQ(paths.supportFolder(), u"/home/mia/Library/Application Support/Orvane"_s);
    EXPECT_EQ(paths.backendInterpreter(),
              u"/home/mia/Library/Application Support/Orvane/venv/bin/python3"_s);
    EXPECT_EQ(paths.backendScript(),
              u"/home/mia/Library/Application Support/Orvane/backend/server.py"_s);
    EXPECT_EQ(paths.modelScript(),
              u"/home/mia/Library/Application Support/Orvane/backend/fetch_model.py"_s);
    EXPECT_EQ(paths.backendLog(), u"/home/mia/Library/Application Support/Orvane/backend.log"_s);
    EXPECT_EQ(paths.earlierBackendLog(),
              u"/home/mia/Library/Application Support/Orvane/backend.log.1"_s);
    EXPECT_EQ(paths.whisperCache(), u"/home/mia/.cache/whisper"_s);
    EXPECT_EQ(paths.outputFolder(), u"/home/mia/Library/Application Support/Orvane/output"_s);
}

TEST(UserPaths, aHomeWhoseNameIsNotUtf8IsToldApart) {
    EXPECT_TRUE(pathsWith("/home/mia", {}).homeHasName);
    EXPECT_TRUE(pathsWith("/home/J\xC3\xB6rg", {}).homeHasName);
    EXPECT_FALSE(pathsWith("/home/J\xF6rg", {}).homeHasName);
}

TEST(UserPaths, theConfigurationFolderCanBeElsewhere) {
    const UserPaths paths = pathsWith("/home/mia", "/data/config/");
    EXPECT_EQ(paths.configHome, u"/data/config"_s);
    EXPECT_EQ(paths.defaultsFile(), u"/data/config/orvane/defaults.json"_s);
    EXPECT_EQ(paths.supportFolder(), u"/home/mia/Library/Application Support/Orvane"_s);
}

TEST(UserPaths, modelsAreWhereTheLibraryHasItsCache) {
    qputenv("XDG_CACHE_HOME", "/data/cache/");
    EXPECT_EQ(pathsWith("/home/mia", {}).whisperCache(), u"/data/cache/whisper"_s);
    for (const char* unusable : {"relative", ""}) {
        qputenv("XDG_CACHE_HOME", unusable);
        EXPECT_EQ(pathsWith("/home/mia", {}).whisperCache(), u"/home/mia/.cache/whisper"_s);
    }
}

TEST(UserPaths, aRelativeConfigurationFolderIsIgnored) {
    EXPECT_EQ(pathsWith("/home/mia", "config").configHome, u"/home/mia/.config"_s);
}

TEST(UserPaths, anUnsetConfigurationFolderIsTheUsualOne) {
    qputenv("HOME", "/home/mia");
    qunsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(UserPaths::fromEnvironment().configHome, u"/home/mia/.config"_s);
}

TEST(UserPaths, areWithoutATrailingSlash) {
    EXPECT_EQ(pathsWith("/home/mia/", {}).home, u"/home/mia"_s);
    EXPECT_EQ(pathsWith("/home//mia/../mia", {}).home, u"/home/mia"_s);
}

TEST(UserPaths, withoutHomeTheAccountsHomeDirectoryHolds) {
    qunsetenv("HOME");
    EXPECT_EQ(UserPaths::fromEnvironment().home, accountHome());
    EXPECT_EQ(pathsWith({}, {}).home, accountHome());
}

TEST(UserPaths, aRelativeHomeIsNone) {
    EXPECT_EQ(pathsWith("mia", {}).home, accountHome());
}

} // namespace orv
