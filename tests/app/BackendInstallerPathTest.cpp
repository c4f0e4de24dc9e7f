#include "BackendInstallerPath.h"

#include <QFileInfo>

#include <gtest/gtest.h>

namespace orv::test {

namespace {

TEST(BackendInstallerPath, leadsToAProgramThatCanBeRun) {
    const QFileInfo installer(backendInstaller());
    EXPECT_TRUE(installer.isAbsolute());
    EXPECT_TRUE(installer.isExecutable());
    EXPECT_EQ(installer.fileName(), QStringLiteral("install-backend"));
}

} // namespace

} // namespace orv::test
