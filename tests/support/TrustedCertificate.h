#pragma once

#include <QSslConfiguration>
#include <QString>

namespace orv::test {

/// Lets the connections of this process trust a certificate while it exists.
class TrustedCertificate {
  public:
    /// `file` is the certificate's path.
    explicit TrustedCertificate(const QString& file) {
        QSslConfiguration trusting = before_;
        trusting.addCaCertificates(file);
        QSslConfiguration::setDefaultConfiguration(trusting);
    }

    ~TrustedCertificate() { QSslConfiguration::setDefaultConfiguration(before_); }

    TrustedCertificate(const TrustedCertificate&) = delete;
    TrustedCertificate& operator=(const TrustedCertificate&) = delete;

  private:
    const QSslConfiguration before_ = QSslConfiguration::defaultConfiguration();
};

} // namespace orv::test
