#include "NetworkPreparation.h"

#include "ThreadChecks.h"

#include <QNetworkProxyFactory>
#include <QNetworkProxyQuery>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QUrl>

#include <atomic>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

std::atomic<bool> done = false;

void prepare() {
    if (QSslSocket::supportsSsl()) {
        QSslConfiguration::defaultConfiguration();
    }
    QNetworkProxyFactory::proxyForQuery(QNetworkProxyQuery(QUrl(u"https://localhost/"_s)));
    done = true;
}

} // namespace

bool NetworkPreparation::isDone() {
    return done;
}

void NetworkPreparation::start() {
    ORV_ON_MAIN();
    if (thread_) {
        return;
    }
    thread_ = std::make_unique<SerialQueue>(u"network-ready"_s);
    thread_->post([this, home = home_.handle()] {
        prepare();
        home.post([this] {
            thread_.reset();
            Q_EMIT ready();
        });
    });
}

} // namespace orv
