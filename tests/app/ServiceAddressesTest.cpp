#include "ServiceAddresses.h"

#include <QUrl>

#include <gtest/gtest.h>

namespace orv::test {

namespace {

TEST(ServiceAddresses, holdTwoPlacesForTheUpdateManifest) {
    const QStringList manifests = ServiceAddresses().updateManifests;
    ASSERT_EQ(manifests.size(), 2);
    EXPECT_NE(manifests[0], manifests[1]);
    for (const QString& address : manifests) {
        const QUrl url(address);
        EXPECT_EQ(url.scheme(), QStringLiteral("https"));
        EXPECT_EQ(url.path(), QStringLiteral("/updates/orv.json"));
    }
}

} // namespace

} // namespace orv::test
