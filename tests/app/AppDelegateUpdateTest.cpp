// The delegate with an update checker that finds a release.

#include "DelegateFixture.h"
#include "ServicePeer.h"
#include "WaitUntil.h"

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class AppDelegateUpdate : public DelegateFixture {
  protected:
    AppDelegateUpdate() { updateURLs = {server.url(u"http"_s) + u"/updates/orv.json"_s}; }

    void serve(const QString& manifest) {
        const auto before = server.count(u"told"_s);
        server.command({{u"path"_s, u"/updates/orv.json"_s}, {u"body"_s, manifest}});
        ASSERT_TRUE(waitUntil([&] { return server.count(u"told"_s) > before; }));
    }

    UpdateOutcome check() {
        std::optional<UpdateOutcome> outcome;
        updates->checkForUpdate([&](UpdateOutcome found) { outcome = found; });
        EXPECT_TRUE(waitUntil([&] { return outcome.has_value(); }));
        return outcome.value_or(UpdateOutcome::Failed);
    }

    QList<TrayMenuItem> menu() {
        delegate->showContextMenu();
        return tray.menus.last();
    }

    ServicePeer server{u"manifest_service.py"_s};
};

TEST_F(AppDelegateUpdate, aFoundReleaseIsOfferedOnceAndStaysInTheMenu) {
    serve(uR"({"version": "4.10", "url": "https://example.org/orv", "notes": "Better."})"_s);
    launch();
    EXPECT_EQ(menu().size(), 5);
    EXPECT_EQ(check(), UpdateOutcome::Available);
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts.first().title, u"ORV Update v4.10"_s);
    EXPECT_EQ(dialogs.alerts.first().message, u"Better."_s);
    EXPECT_EQ(check(), UpdateOutcome::Available);
    EXPECT_EQ(dialogs.alerts.size(), 1) << "not again at the next check";

    const QList<TrayMenuItem> items = menu();
    ASSERT_EQ(items.size(), 7);
    EXPECT_EQ(items[2].text, u"<menu.backend.stopped>"_s);
    EXPECT_TRUE(items[3].text.isEmpty());
    EXPECT_EQ(items[4].text, u"Update: v4.10"_s);
    EXPECT_TRUE(items[5].text.isEmpty());
    EXPECT_EQ(items[6].text, u"<menu.quit>"_s);
    items[4].action();
    EXPECT_EQ(opener.addresses, QStringList{u"https://example.org/orv"_s});
}

TEST_F(AppDelegateUpdate, theSettingsAreToldOfAReleaseThatNobodyAskedFor) {
    serve(uR"({"version": "4.10", "url": "https://example.org/orv"})"_s);
    launch();
    UpdateControl& control = *updates;
    QObject row;
    QStringList shown;
    control.follow(&row, [&] { shown.append(control.availableVersion()); });
    EXPECT_EQ(check(), UpdateOutcome::Available);
    ASSERT_FALSE(shown.isEmpty());
    EXPECT_EQ(shown.last(), u"4.10"_s);
    serve(uR"({"version": "4.11", "url": "https://example.org/orv"})"_s);
    EXPECT_EQ(check(), UpdateOutcome::Available);
    EXPECT_EQ(shown.last(), u"4.11"_s);
}

TEST_F(AppDelegateUpdate, nothingIsOfferedWhenTheProgramIsUpToDate) {
    serve(uR"({"version": "4.9", "url": "https://example.org/orv"})"_s);
    launch();
    EXPECT_EQ(check(), UpdateOutcome::UpToDate);
    EXPECT_TRUE(dialogs.alerts.isEmpty());
    EXPECT_EQ(menu().size(), 5);
}

} // namespace

} // namespace orv::test
